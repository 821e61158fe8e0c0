#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "Kel/TypeDescriptor.h"
#include "Kel/ValueType.h"
#include "data/Trees.h"

namespace Host {

/// One node of the data tree.
struct Node {
  enum class Kind : std::uint8_t {
    container,  ///< stands at the top, always there
    presence,   ///< a container that is there or not
    list,       ///< of entities, by one key
    records,    ///< a list of records, all of whose leaves are keys
    mapping,    ///< a list of pairs: a key leaf and a value leaf
    leafList,   ///< of scalars
    leaf,
  };

  Kind kind = Kind::leaf;
  std::string name;         ///< in kebab-case, without module
  std::string_view module;  ///< the module that defines it
  /// Written by the library alone (itself, or all that is above it).
  bool state = false;
  /// How many of `children`, from the first on, are keys of an entry.
  std::size_t keys = 0;
  std::vector<const Node*> children;  ///< keys first, then in the order of the attribute ids
  const Node* parent = nullptr;

  const Container* top = nullptr;  ///< of a container at the top
  const Kel::Row* row = nullptr;   ///< the attribute; null at the top and for parts of a value
  /// Of a leaf: its type. Of a leaf-list and of records: that of an entry. Else null.
  const Kel::ValueType* type = nullptr;
  /// A second type that the text of a leaf has to suit: see Schema. Null: none.
  const Kel::ValueType* also = nullptr;
  std::size_t offset = 0;  ///< of a leaf of a record: where it lies in the record

  /// The child of this name; null when there is none. `hint` is where the search begins, and is
  /// set to the position behind the child found.
  const Node* child(std::string_view wanted, std::size_t& hint) const;
  /// Whether what it describes is an entity of its own, one that comes and goes.
  bool isObject() const { return kind == Kind::list || kind == Kind::presence; }
  bool isKey() const { return parent != nullptr && position < parent->keys; }
  std::size_t position = 0;  ///< among the children of `parent`
};

/// The data tree that documents, paths and answers speak of: the model's attributes as YANG nodes.
///
/// It is made of the rows of the entity types and follows these rules:
/// - A node is named like its attribute, in kebab-case: srcL4App is "src-l4-app". A list is named
///   after one entry: an attribute policyModifierSet is "policy-modifier".
/// - Constants and values are leaves, and the constants are keys. A set of scalars is a leaf-list,
///   a set of records a list with one key per field, a map a list of key and value, a collection of
///   entities a list, an entity that may be absent a presence container.
/// - A name means the same everywhere. Where the model has a leaf as plain text in one place and as
///   a narrower type in another (the VRF names of the monitor's records), text has to suit both.
class Schema {
 public:
  /// The schema of this program, built upon the first call.
  static const Schema& instance();

  Schema(const Schema&) = delete;
  Schema& operator=(const Schema&) = delete;

  const std::vector<const Node*>& tops() const { return tops_; }
  /// The container of this qualified name, such as "vela-l3:policy-source"; null when there is
  /// none.
  const Node* top(std::string_view qualified) const;

 private:
  Schema();
  Node& add(Node& parent, Node::Kind kind, std::string name);
  void addRows(Node& node, const Kel::TypeDescriptor& type);
  void addRow(Node& node, const Kel::Row& row);
  void narrowTexts();

  std::deque<Node> nodes_;
  std::vector<const Node*> tops_;
};

/// "vela-l3:policy-source": the name with its module.
std::string qualifiedName(const Node& node);

/// The name in kebab-case: "srcL4App" is "src-l4-app".
std::string kebabCase(std::string_view attribute);

}  // namespace Host
