#include "text/JsonWriter.h"

#include <charconv>
#include <iterator>

#include "text/JsonText.h"

namespace Host {

void JsonWriter::separate() {
  if (named_) {
    named_ = false;
    return;
  }
  if (!first_) {
    out_ += ',';
  }
  if (pretty_ && oneLine_) {
    // Deliberate: blanks inside the braces of a record, none inside the brackets of scalars.
    out_ += first_ && scalars_ ? "" : " ";
  } else if (depth_ > 0) {
    breakLine();
  }
  first_ = false;
}

void JsonWriter::breakLine() {
  if (pretty_) {
    out_ += '\n';
    lineStart_ = out_.size();
    out_.append(2 * depth_, ' ');
  }
}

void JsonWriter::open(char bracket) {
  separate();
  out_ += bracket;
  ++depth_;
  first_ = true;
}

void JsonWriter::close(char bracket) {
  --depth_;
  if (!first_) {
    breakLine();
  }
  out_ += bracket;
  first_ = false;
  flushWhenFull();
}

void JsonWriter::openRecord() {
  open('{');
  oneLine_ = true;
}

void JsonWriter::closeRecord() {
  oneLine_ = false;
  --depth_;
  out_ += pretty_ && !first_ ? " }" : "}";
  first_ = false;
  flushWhenFull();
}

void JsonWriter::openScalars() {
  open('[');
  oneLine_ = scalars_ = true;
  scalarBegins_.clear();
}

void JsonWriter::closeScalars() {
  const bool broken = !oneLine_;
  oneLine_ = scalars_ = false;
  --depth_;
  if (broken) {
    breakLine();
  }
  out_ += ']';
  first_ = false;
  flushWhenFull();
}

void JsonWriter::scalarDone() {
  if (!scalars_) {
    return;
  }
  if (pretty_ && oneLine_ && out_.size() - lineStart_ > kLineWidth) {
    breakScalars();
  }
  if (!pretty_ || !oneLine_) {
    flushWhenFull();
  }
}

/// The scalars have grown too long for one line: what is written of them is laid out anew.
void JsonWriter::breakScalars() {
  oneLine_ = false;
  std::string laidOut;
  laidOut.swap(out_);
  out_.assign(laidOut, 0, scalarBegins_.front());
  for (std::size_t i = 0; i < scalarBegins_.size(); ++i) {
    const bool last = i + 1 == scalarBegins_.size();
    // Between two of them stand a comma and a blank.
    const std::size_t end = last ? laidOut.size() : scalarBegins_[i + 1] - 2;
    breakLine();
    out_.append(laidOut, scalarBegins_[i], end - scalarBegins_[i]);
    out_ += last ? "" : ",";
  }
}

void JsonWriter::name(std::string_view name) {
  separate();
  out_ += '"';
  out_ += name;
  out_ += pretty_ ? "\": " : "\":";
  named_ = true;
}

void JsonWriter::beginScalar() {
  separate();
  if (pretty_ && scalars_ && oneLine_) {
    scalarBegins_.push_back(out_.size());
  }
}

void JsonWriter::value(const Kel::ValueType& type, const void* value) {
  beginScalar();
  if (type.encoding == Kel::Encoding::string || type.encoding == Kel::Encoding::decimal) {
    out_ += '"';
    const std::size_t from = out_.size();
    type.append(out_, value);
    escapeJsonFrom(out_, from);
    out_ += '"';
  } else {
    type.append(out_, value);
  }
  scalarDone();
}

void JsonWriter::spelled(std::string_view scalar) {
  beginScalar();
  out_ += scalar;
  scalarDone();
}

void JsonWriter::text(std::string_view text) {
  separate();
  appendJsonText(out_, text);
}

void JsonWriter::boolean(bool value) {
  separate();
  out_ += value ? "true" : "false";
}

void JsonWriter::number(std::uint64_t value) {
  separate();
  Kel::appendValue(out_, value);
}

void JsonWriter::real(double value) {
  separate();
  char digits[400];  // the smallest double takes 326 places
  out_.append(digits, std::to_chars(digits, std::end(digits), value, std::chars_format::fixed).ptr);
}

void JsonWriter::endLine() {
  out_ += '\n';
  sink_.write(out_);
  out_.clear();
  lineStart_ = 0;
  first_ = true;
}

void JsonWriter::flushWhenFull() {
  if (out_.size() >= kPiece) {
    sink_.write(out_);
    out_.clear();
    lineStart_ = 0;
  }
}

}  // namespace Host
