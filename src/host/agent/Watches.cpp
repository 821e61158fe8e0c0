#include "agent/Watches.h"

#include "Kel/System.h"
#include "text/Reply.h"

namespace Host {

/// One `watch` of one client.
class Watches::Watch : public EventReceiver {
 public:
  Watch(Client& from, std::size_t number) : from_(from), number_(number) {}

  void event(const Event& event) override {
    if (lost_) {
      return;
    }
    lost_ = whole_ && output().size() > allowed_;
    if (!lost_) {
      Reply reply(output(), number_);
      reply.json().name("time");
      reply.json().real(Kel::System::currentTime());
      writeMembers(reply.json(), event);
      reply.end();
    }
  }
  /// The first picture is whole.
  void synchronized() {
    Reply reply(output(), number_);
    reply.json().name("synchronized");
    reply.json().boolean(true);
    reply.end();
    whole_ = true;
    allowed_ = output().size() + Client::kMostWaiting;
  }
  void sayThatItIsLost() {
    Reply(output(), number_)
        .error(
            "this client reads too slowly to keep up with the changes; connect again for a new "
            "first picture");
    from_.finish();
  }

  bool isLost() const { return lost_; }
  bool isOf(const Client& client) const { return &client == &from_; }

 private:
  OutputQueue& output() const { return from_.output(); }

  Client& from_;
  const std::size_t number_;
  bool whole_ = false;
  bool lost_ = false;
  std::size_t allowed_ = 0;  // bytes that may wait
};

Watches::Watches(const Trees& trees) : feed_(trees) {}
Watches::~Watches() = default;

void Watches::add(Client& from, std::size_t number, const Request& request) {
  const TreePath path = request.path.value_or(TreePath());
  if (const std::string why = ChangeFeed::whyNot(path); !why.empty()) {
    return Reply(from.output(), number).error(why);
  }
  from.stayIs(true);
  Watch& watch = *watches_.emplace_back(std::make_unique<Watch>(from, number));
  feed_.add(watch, path);
  watch.synchronized();
}

void Watches::drop(const Client& from) {
  endIf([&](const Watch& watch) { return watch.isOf(from); });
}

void Watches::look() {
  endIf([](Watch& watch) {
    if (watch.isLost()) {
      watch.sayThatItIsLost();
    }
    return watch.isLost();
  });
}

template <class Condition>
void Watches::endIf(Condition isOver) {
  watches_.remove_if([&](const std::unique_ptr<Watch>& watch) {
    const bool over = isOver(*watch);
    if (over) {
      feed_.remove(*watch);
    }
    return over;
  });
}

}  // namespace Host
