#pragma once

#include <memory>
#include <vector>

#include "model/reference/World.h"

namespace Reference {

class Node;
using NodePtr = std::shared_ptr<Node>;

class Subscriber {
 public:
  virtual ~Subscriber() = default;
  virtual void notify(int id, const Text& key) = 0;
};

/// Who is told, in the order of registration. A round tells those that were there when it began and
/// still are; the first exception goes on when all were told.
class Publisher {
 public:
  void add(Subscriber& subscriber);
  void remove(Subscriber& subscriber);
  void publish(int id, const Text& key) const;
  std::size_t size() const { return subscribers_.size(); }

 private:
  std::vector<std::pair<Subscriber*, long>> subscribers_;  // with a number that is never used again
  long next_ = 0;
};

enum class Kind : unsigned char { value, members, names, entries, single };

struct NodeType;

struct Attribute {
  int id;
  Kind kind;
  const NodeType* below = nullptr;  ///< the type of entries and of a single one
  const char* initial = "";
};

struct NodeType {
  const char* name;
  std::vector<Attribute> attributes;
  Order order = Order::table;  ///< of its entries
  bool journaled = false;

  const Attribute& attribute(int id) const;
  bool has(int id) const;
};

/// An entity of any type: its attributes by number, every key and value as its printed form. It
/// notifies as entities do: of every write of a value, of every entry and member that comes or
/// goes.
class Node : public std::enable_shared_from_this<Node> {
 public:
  Node(World& world, const NodeType& type, Text key);

  const NodeType& type;
  const Text key;
  Publisher publisher;

  // value
  const Text& value(int id) const { return values_.at(id); }
  void write(int id, const Text& value);
  // members, and names with a value
  bool has(int id, const Text& key) const;
  void insert(int id, const Text& key);
  void erase(int id, const Text& key);
  const std::map<Text, Text>& names() const { return names_; }
  Text name(const Text& key) const;
  void nameIs(int id, const Text& key, const Text& name);
  Collection<bool>& members(int id) { return members_.at(id); }
  // entries, and a single one (whose key is empty)
  Collection<NodePtr>& entries(int id) { return entries_.at(id); }
  NodePtr entry(int id, const Text& key) const;
  NodePtr entryIs(int id, const Text& key);
  void entryDel(int id, const Text& key);
  void entryDelAll(int id);
  /// Whatever the attribute holds goes, one by one.
  void clear(int id);

  /// Tells the subscribers, without a change.
  void publish(int id, const Text& key = {});

 private:
  World& world_;
  std::map<int, Text> values_;
  std::map<int, Collection<bool>> members_;
  std::map<int, Collection<NodePtr>> entries_;
  std::map<Text, Text> names_;
};

}  // namespace Reference
