#include "tracing/TraceMetadata.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "text/Concat.h"
#include "tracing/MetadataTokens.h"

namespace Host {
namespace {

using Lumo::Kind;

std::vector<std::string> split(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  for (std::size_t end = 0; end != std::string_view::npos;) {
    end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(
        std::min(text.size(), end == std::string_view::npos ? end : end + separator.size()));
  }
  return parts;
}

/// The literals of a format, one more than it has values.
std::vector<std::string> literalsOf(std::string_view format) {
  std::vector<std::string> literals(1);
  for (std::size_t at = 0; at < format.size(); ++at) {
    if (format[at] != '%') {
      literals.back() += format[at];
    } else if (++at < format.size() && format[at] == 's') {
      literals.emplace_back();
    } else {
      literals.back() += '%';
    }
  }
  return literals;
}

Kind kindOf(std::string_view word, std::string_view typeName) {
  if (word == "string") {
    return Kind::text;
  }
  if (word == "enum") {
    return typeName == "bool" ? Kind::boolean : Kind::enumeration;
  }
  if (word == "f64") {
    return Kind::real;
  }
  if (word.starts_with('i')) {
    return Kind::integer;
  }
  return typeName.starts_with("uint") ? Kind::natural : Kind::enumeration;
}

}  // namespace

/// Goes through the text once.
class TraceMetadataReader {
 public:
  TraceMetadataReader(std::string_view text, const std::string& name, TraceMetadata& out)
      : tokens_(text, name), out_(out) {}

  void read() {
    int depth = 0;  // of blocks that say nothing about sites
    bool stream = false;
    while (!tokens_.atEnd()) {
      if (tokens_.takeIf("env")) {
        environment();
      } else if (tokens_.takeIf("event")) {
        event();
      } else if (tokens_.takeIf("uuid")) {
        if (tokens_.takeIf("=")) {  // otherwise the member of the packet header
          uuid(tokens_.takeText());
        }
      } else {
        const std::string word = tokens_.take();
        depth += word == "{" ? 1 : word == "}" ? -1 : 0;
        stream = stream || word == "stream";
      }
    }
    if (!stream || depth != 0 || out_.uuid_ == Lumo::Uuid{} ||
        out_.sites_.size() != environment_.size()) {
      tokens_.fail(concat(
          {"all of a trace with ", std::to_string(environment_.size()), " kinds of events"}));
    }
  }

 private:
  void uuid(const std::string& text) {
    std::string digits = text;
    std::erase(digits, '-');
    for (std::size_t i = 0; i < out_.uuid_.size(); ++i) {
      const char* const pair = digits.c_str() + 2 * i;
      if (digits.size() != 32 ||
          std::from_chars(pair, pair + 2, out_.uuid_[i], 16).ptr != pair + 2) {
        tokens_.fail("a uuid");
      }
    }
  }

  void environment() {
    tokens_.expect("{");
    while (!tokens_.takeIf("}")) {
      const std::string name = tokens_.take();
      tokens_.expect("=");
      if (name == "process_id") {
        out_.processId_ = tokens_.takeNumber<long>();
      } else {
        const std::string value = tokens_.takeText();
        if (name.starts_with("site_")) {
          environment_[name.substr(5)] = split(value, "|");
        }
      }
      tokens_.expect(";");
    }
    tokens_.expect(";");
  }

  void event() {
    constexpr std::size_t kBeforeTypes = 5;  // facility, level, file, line, handler
    tokens_.expect("{");
    tokens_.expect("id");
    tokens_.expect("=");
    const auto parts = environment_.find(tokens_.now());
    if (parts == environment_.end() || parts->second.size() < kBeforeTypes) {
      tokens_.fail("the number of a site that the environment describes");
    }
    TraceSite& site = out_.sites_.emplace_back();
    site.site.id = tokens_.takeNumber<std::uint32_t>();
    if (site.site.id + 1 != out_.sites_.size()) {
      tokens_.fail("the events in the order of their numbers");
    }
    for (const char* const skipped : {";", "stream_id", "=", "0", ";", "name", "="}) {
      tokens_.expect(skipped);
    }
    const std::string format = tokens_.takeText();
    for (const char* const skipped : {";", "loglevel", "="}) {
      tokens_.expect(skipped);
    }
    site.site.level = tokens_.takeNumber<unsigned>();
    for (const char* const skipped : {";", "fields", ":", "=", "struct", "{"}) {
      tokens_.expect(skipped);
    }
    const std::vector<std::string>& known = parts->second;
    site.site.facility = known[0];
    site.site.file = known[2];
    std::from_chars(known[3].data(), known[3].data() + known[3].size(), site.site.line);
    std::vector<const Lumo::ValueType*> types;
    while (!tokens_.takeIf("}")) {
      const std::size_t next = kBeforeTypes + types.size();
      types.push_back(&field(site, next < known.size() ? known[next] : ""));
    }
    for (const char* const skipped : {";", "}", ";"}) {
      tokens_.expect(skipped);
    }
    pieces(site, literalsOf(format), known[4], types);
  }

  // "enum : u8 { "a" = 0, … } _name;", "u8 _name[18];", "string _name;"
  const Lumo::ValueType& field(TraceSite& site, const std::string& typeName) {
    TraceMetadata::Type& type = out_.types_.emplace_back();
    type.name = typeName;
    std::string word = tokens_.take();
    type.type.kind = kindOf(word, typeName);
    if (word == "enum") {
      tokens_.expect(":");
      word = tokens_.take();
      tokens_.expect("{");
      do {
        type.labelTexts.push_back(tokens_.takeText());
        tokens_.expect("=");
        tokens_.takeNumber<unsigned>();
      } while (tokens_.takeIf(","));
      tokens_.expect("}");
    }
    if (word != "string") {
      unsigned bits = 0;
      const char* const end = word.data() + word.size();
      if (word.size() < 2 || std::from_chars(word.data() + 1, end, bits).ptr != end || bits > 64) {
        tokens_.fail("the type of a value");
      }
      type.type.size = static_cast<std::uint16_t>(bits / 8);
    }
    const std::string name = tokens_.take();
    site.names.push_back(name.substr(name.starts_with('_') ? 1 : 0));
    if (tokens_.takeIf("[")) {
      type.type.kind = Kind::bytes;
      type.type.size = tokens_.takeNumber<std::uint16_t>();
      tokens_.expect("]");
    }
    tokens_.expect(";");
    type.labels.assign(type.labelTexts.begin(), type.labelTexts.end());
    type.type.labels = type.labels;
    type.type.name = type.name;
    return type.type;
  }

  void pieces(TraceSite& site, std::vector<std::string> literals, const std::string& handler,
              const std::vector<const Lumo::ValueType*>& types) {
    if (literals.size() != types.size() + 1) {
      tokens_.fail("as many values as the format of the event has");
    }
    std::string& first = literals.front();
    const std::size_t called = first.find(concat({handler, "("}));
    const std::size_t begin = called == std::string::npos ? first.find(handler) : called;
    if (begin == std::string::npos) {
      tokens_.fail(concat({"a format with the handler ", handler}));
    }
    site.site.scope = first.substr(0, begin);
    site.site.form = handler;
    first.erase(0, begin + handler.size());
    site.function = handler + first.substr(0, first.find(')') + 1);
    const std::string& scope = site.site.scope;
    site.className = scope.substr(scope.rfind(' ') + 1);
    if (site.className.ends_with("::")) {
      site.className.resize(site.className.size() - 2);
    }
    for (std::size_t i = 0; i < literals.size(); ++i) {
      site.site.pieces.push_back({literals[i], nullptr});
      if (i < types.size()) {
        site.site.pieces.push_back({{}, types[i]});
      }
    }
  }

  MetadataTokens tokens_;
  TraceMetadata& out_;
  std::map<std::string, std::vector<std::string>> environment_;  // by the number of the site
};

TraceMetadata::TraceMetadata(std::string_view text, const std::string& name) {
  TraceMetadataReader(text, name, *this).read();
}

}  // namespace Host
