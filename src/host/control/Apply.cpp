#include "control/Apply.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <ostream>

#include "control/ChangeText.h"
#include "control/SentLines.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/Report.h"

namespace Host {
namespace {

class Application {
 public:
  Application(const ApplyRequest& request, const RunOptions& options, const Console& console,
              std::string name)
      : request_(request),
        options_(options),
        console_(console),
        name_(std::move(name)),
        report_(console.err, options.color, std::numeric_limits<std::size_t>::max()),
        connection_(request.socket),
        sent_(connection_, request.dryRun) {}

  int run(int input) {
    InputLines lines(input, name_);
    try {
      exchange(lines, input);
    } catch (const std::exception&) {
      sum();
      if (!sent_.areNone()) {
        console_.err << "vpm: what became of " << sent_.open() << " is not known\n";
      }
      throw;
    }
    sum();
    return failed_ == 0 ? kDone : kDifferent;
  }

 private:
  void exchange(InputLines& lines, int input) {
    for (;;) {
      while (const auto answer = sent_.next()) {
        take(*answer);
      }
      print();
      while (!sent_.areMany()) {
        const auto line = lines.ready();
        if (!line) {
          break;
        }
        sent_.send(lines.number(), *line);
      }
      const bool wantsMore = !sent_.areMany();
      if (wantsMore && lines.over() && sent_.areNone()) {
        return;
      }
      if (connection_.pump(wantsMore && !lines.over() ? input : -1)) {
        lines.fill();
      }
    }
  }

  void take(const AgentAnswer& answer) {
    const std::string place = concat({name_, ":", std::to_string(answer.line)});
    if (answer.error) {
      ++failed_;
      report_.problem(place, *answer.error);
    } else {
      ++done_;
    }
    if (request_.dryRun && !request_.json) {
      tell(place, answer);
    } else if (answer.members.size() > (answer.error ? 2U : 1U)) {
      // There is something beside the number of the line and an error.
      out_ += concat({answer.text, "\n"});
    }
  }

  /// What a line would change, for people.
  void tell(std::string_view place, const AgentAnswer& answer) {
    const auto changes = arrayIn(answer.members, "changes");
    if (changes.size() != 0) {
      out_ += concat({place, ":\n"});
    } else if (!answer.error) {
      out_ += concat({place, ": changes nothing in version 2\n"});
    }
    for (const auto change : changes) {
      appendChange(out_, change.get_object(), options_.outColor);
      out_ += '\n';
    }
    for (const auto warning : arrayIn(answer.members, "warnings")) {
      std::string_view text;
      if (warning.get(text) == simdjson::SUCCESS) {
        out_ += concat({place, ": warning: ", printable(text), "\n"});
      }
    }
  }

  void print() {
    if (!out_.empty()) {
      console_.out.write(out_);
      out_.clear();
    }
  }

  void sum() {
    console_.err << "vpm: " << done_ << (request_.dryRun ? " tried, " : " applied, ") << failed_
                 << " failed\n";
  }

  const ApplyRequest& request_;
  const RunOptions& options_;
  const Console& console_;
  std::string name_;
  Report report_;
  Connection connection_;
  SentLines sent_;
  std::string out_;
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
};

}  // namespace

int apply(const ApplyRequest& request, const RunOptions& options, const Console& console) {
  if (request.log.empty() || request.log == "-") {
    return Application(request, options, console, "<stdin>").run(STDIN_FILENO);
  }
  const Descriptor file(::open(request.log.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    Report(console.err, options.color).problem(request.log, std::strerror(errno));
    return kWrongInput;
  }
  return Application(request, options, console, request.log).run(file.number());
}

}  // namespace Host
