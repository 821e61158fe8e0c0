#include "text/SyntaxCheck.h"

#include <algorithm>
#include <vector>

#include "text/Concat.h"
#include "text/JsonText.h"
#include "text/SourceText.h"

namespace Host {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool isWordPart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.' || c == '+' || c == '-';
}

class SyntaxCheck {
 public:
  SyntaxCheck(std::string_view text, std::string_view what) : text_(text), what_(what) {}

  std::optional<Fault> run() {
    if (skipBlanks(); atEnd()) {
      fail(0, 0, concat({"the ", what_, " is empty; expected an object, at the least {}"}));
      return fault_;
    }
    while (!fault_ && (want_ != Want::nothing || !open_.empty())) {
      if (skipBlanks(); atEnd()) {
        endedInside();
      } else {
        next();
      }
    }
    if (skipBlanks(); !fault_ && !atEnd()) {
      fail(at_, 1, concat({"the ", what_, " has ended before this; expected nothing more"}));
    }
    return fault_;
  }

 private:
  enum class Want { value, valueOrEnd, name, nameOrEnd, colon, commaOrEnd, nothing };

  bool atEnd() const { return at_ == text_.size(); }
  char here() const { return text_[at_]; }
  bool inObject() const { return text_[open_.back()] == '{'; }
  char closing() const { return inObject() ? '}' : ']'; }
  void skipBlanks() { at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size()); }
  void fail(std::size_t offset, std::size_t length, std::string message) {
    fault_ = Fault{offset, length, std::move(message), {}};
  }

  void next() {
    switch (want_) {
      case Want::value:
      case Want::valueOrEnd:
        return value();
      case Want::name:
      case Want::nameOrEnd:
        return name();
      case Want::colon:
        return here() == ':' ? step(Want::value) : unexpected("a colon behind the member's name");
      default:
        return commaOrEnd();
    }
  }
  void step(Want wanted) {
    ++at_;
    want_ = wanted;
  }
  void valueDone() { want_ = open_.empty() ? Want::nothing : Want::commaOrEnd; }

  void value() {
    const char c = here();
    if (c == '{' || c == '[') {
      open_.push_back(at_);
      step(c == '{' ? Want::nameOrEnd : Want::valueOrEnd);
    } else if (c == ']' && want_ == Want::valueOrEnd) {
      close();
    } else if (c == '"') {
      string();
      valueDone();
    } else if (c == ']' && !open_.empty() && !inObject()) {
      fail(at_, 1, "a comma stands before this bracket; expected another value");
    } else {
      word();
      valueDone();
    }
  }

  void name() {
    if (here() == '"') {
      string();
      want_ = Want::colon;
    } else if (here() == '}' && want_ == Want::nameOrEnd) {
      close();
    } else if (here() == '}') {
      fail(at_, 1, "a comma stands before this brace; expected another member");
    } else {
      unexpected("the name of a member in double quotes");
    }
  }

  void commaOrEnd() {
    if (here() == ',') {
      step(inObject() ? Want::name : Want::value);
    } else if (here() == closing()) {
      close();
    } else {
      unexpected(inObject() ? "a comma or the closing brace }"
                            : "a comma or the closing bracket ]");
    }
  }
  void close() {
    open_.pop_back();
    ++at_;
    valueDone();
  }

  void string() {
    const std::size_t begin = at_++;
    for (;;) {
      if (atEnd() || here() == '\n' || here() == '\r') {
        return fail(begin, at_ - begin, "this text has no closing quote on its line");
      }
      const auto c = static_cast<unsigned char>(here());
      if (c == '"') {
        ++at_;
        return;
      }
      if (c < 0x20) {
        return fail(at_, 1,
                    c == 0 ? "text must not hold NUL (the byte 0x00)"
                           : concat({"the control byte ", hexByte(c),
                                     " in text; write it as an escape, such as \\t"}));
      }
      const std::size_t bytes =
          c == '\\' ? escapeLength(text_.substr(at_)) : utf8Length(text_.substr(at_));
      if (bytes == 0) {
        return c == '\\' ? fail(at_, 2, "no JSON escape; a backslash itself is written \\\\")
                         : fail(at_, 1,
                                concat({"the byte ", hexByte(c),
                                        " is no UTF-8 here; expected text in UTF-8"}));
      }
      at_ += bytes;
    }
  }

  void word() {
    std::size_t end = at_;
    while (end < text_.size() && isWordPart(text_[end])) {
      ++end;
    }
    const std::string_view found = text_.substr(at_, end - at_);
    if (found.empty()) {
      return unexpected("a value");
    }
    if (found != "true" && found != "false" && found != "null" && !isJsonNumber(found)) {
      const bool number =
          found[0] == '-' || found[0] == '+' || (found[0] >= '0' && found[0] <= '9');
      return fail(at_, found.size(),
                  concat({"\"", found.substr(0, 40),
                          number ? "\" is no JSON number; expected digits without leading zeros, "
                                   "such as 20000"
                                 : "\" is no JSON value; text stands in double quotes"}));
    }
    at_ = end;
  }

  void unexpected(std::string_view expected) {
    std::string message = "found ";
    const auto c = static_cast<unsigned char>(here());
    if (c < 0x20 || c >= 0x7f) {
      message += concat({"the byte ", hexByte(c)});
    } else {
      message += c == '"' ? "text" : concat({"'", text_.substr(at_, 1), "'"});
    }
    message.append("; expected ").append(expected);
    if (c == '/' || c == '#') {
      message += " (JSON has no comments)";
    } else if (c == '\'') {
      message += " (text stands in double quotes)";
    }
    fail(at_, 1, std::move(message));
  }

  void endedInside() {
    // Behind the last thing there is, not behind the blank lines that follow it.
    const std::size_t last = text_.find_last_not_of(kBlanks);
    const SourceText::Place place = SourceText::placeIn(text_, open_.empty() ? 0 : open_.back());
    // Of a line, only the column is known here.
    const std::string line =
        what_ == "line" ? "" : concat({"line ", std::to_string(place.line), ", "});
    fail(last + 1, 0,
         open_.empty()
             ? concat({"the ", what_, " ends here; expected a value"})
             : concat({"the ", what_, " ends inside the ", inObject() ? "object" : "array",
                       " that begins at ", line, "column ", std::to_string(place.column)}));
  }

  std::string_view text_;
  std::string_view what_;
  std::size_t at_ = 0;
  Want want_ = Want::value;
  std::vector<std::size_t> open_;  // where the objects and arrays begin that have not ended
  std::optional<Fault> fault_;
};

}  // namespace

std::optional<Fault> findSyntaxFault(std::string_view text, std::string_view what) {
  return SyntaxCheck(text, what).run();
}

}  // namespace Host
