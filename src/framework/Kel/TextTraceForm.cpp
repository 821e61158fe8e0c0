#include "Kel/TextTrace.h"

// The forms in which the text trace reads levels and writes lines.

namespace Kel::TextTrace {
namespace {

bool isControl(char byte) {
  return static_cast<unsigned char>(byte) < 0x20 || static_cast<unsigned char>(byte) == 0x7f;
}

bool isLevel(char byte) { return byte >= '0' && byte <= '9'; }

}  // namespace

bool parseLevels(std::string_view text, Levels& levels, std::string& why) {
  Levels found = 0;
  std::string_view rest = text == "none" ? std::string_view() : text;
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    const std::string_view item = rest.substr(0, comma);
    const bool range = item.size() == 3 && item[1] == '-';
    if (!(item.size() == 1 || range) || !isLevel(item.front()) || !isLevel(item.back()) ||
        item.front() > item.back() || comma + 1 == rest.size()) {
      why = "\"" + std::string(text) +
            "\" is no set of levels; expected digits and rising ranges " +
            "with commas between, such as 6-8 or 6,8 or 0-9, or none";
      return false;
    }
    for (char level = item.front(); level <= item.back(); ++level) {
      found |= 1U << static_cast<unsigned>(level - '0');
    }
    rest.remove_prefix(comma == std::string_view::npos ? rest.size() : comma + 1);
  }
  levels = found;
  return true;
}

std::string textOfLevels(Levels levels) {
  std::string out;
  for (unsigned level = 0; level <= 9; ++level) {
    if (((levels >> level) & 1U) == 0) {
      continue;
    }
    unsigned last = level;
    while (last < 9 && ((levels >> (last + 1)) & 1U) != 0) {
      ++last;
    }
    out += out.empty() ? "" : ",";
    out += static_cast<char>('0' + level);
    if (last > level) {
      out += last == level + 1 ? ',' : '-';
      out += static_cast<char>('0' + last);
    }
    level = last;
  }
  return out.empty() ? "none" : out;
}

void escapeFrom(std::string& out, std::size_t from) {
  for (std::size_t at = from; at < out.size(); ++at) {
    if (!isControl(out[at])) {
      continue;
    }
    const auto byte = static_cast<unsigned char>(out[at]);
    const char escaped[] = {'\\', 'x', "0123456789abcdef"[byte >> 4U],
                            "0123456789abcdef"[byte & 15U]};
    out.replace(at, 1, escaped, sizeof escaped);
    at += sizeof escaped - 1;
  }
}

void appendEscaped(std::string& out, std::string_view text) {
  const std::size_t from = out.size();
  out += text;
  escapeFrom(out, from);
}

void appendLine(std::string& out, const Line& line) {
  appendValue(out, line.time);
  out.append(" ").append(line.facility).append(" ");
  appendValue(out, line.level);
  out.append(" ").append(line.file).append(":");
  appendValue(out, line.line);
  out.append(" ").append(line.handler).append(": ").append(line.message).append("\n");
}

}  // namespace Kel::TextTrace
