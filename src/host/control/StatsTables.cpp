#include "control/StatsTables.h"

#include <algorithm>
#include <vector>

#include "text/LineFiller.h"
#include "text/Report.h"

namespace Host {
namespace {

using simdjson::dom::array;
using simdjson::dom::element;
using simdjson::dom::object;

constexpr std::size_t kGap = 2;

struct Cell {
  std::string text;
  bool number;
};
using Row = std::vector<Cell>;

Cell cellOf(const element& value) {
  std::string_view text;
  return value.get(text) == simdjson::SUCCESS ? Cell{printable(text), false}
                                              : Cell{simdjson::minify(value), true};
}

std::string capitals(std::string_view name) {
  std::string text = printable(name);
  std::ranges::transform(text, text.begin(), [](char c) {
    return c == '-' ? ' ' : c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return text;
}

void appendRow(std::string& out, const Row& row, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::size_t width = columnsOf(row[i].text);
    const std::string blanks(widths[i] - std::min(width, widths[i]), ' ');
    if (row[i].number) {
      line += blanks + row[i].text;
    } else if (width > widths[i]) {
      line += row[i].text + '\n' + std::string(widths[i], ' ');
    } else {
      line += row[i].text + blanks;
    }
    line += std::string(kGap, ' ');
  }
  line.erase(line.find_last_not_of(' ') + 1);
  out += line + '\n';
}

/// Rows with a line of headings. What does not fit takes the room from the first column; a text
/// that is too wide for it stands on a line of its own.
void appendTable(std::string& out, const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < std::min(row.size(), widths.size()); ++i) {
      widths[i] = std::max(widths[i], columnsOf(row[i].text));
    }
  }
  std::size_t others = 0;
  for (std::size_t i = 1; i < widths.size(); ++i) {
    others += kGap + widths[i];
  }
  widths.front() = std::min(widths.front(), kColumns - std::min(kColumns - 1, others));
  for (const Row& row : rows) {
    appendRow(out, row, widths);
  }
}

void appendEntries(std::string& out, const array& entries) {
  std::vector<Row> rows;
  for (const element entry : entries) {
    Row names;
    Row cells;
    const simdjson::dom::object members = entry.get_object();  // lives as long as the loop
    for (const auto& [name, value] : members) {
      cells.push_back(cellOf(value));
      names.push_back({capitals(name), cells.back().number});
    }
    if (rows.empty()) {
      rows.push_back(std::move(names));
    }
    if (cells.size() == rows.front().size()) {
      rows.push_back(std::move(cells));
    }
  }
  if (!rows.empty()) {
    appendTable(out, rows);
  }
}

}  // namespace

std::string statsTables(const object& stats) {
  std::vector<Row> single;
  std::string tables;
  for (const auto& [name, value] : stats) {
    if (value.is_array()) {
      tables += '\n';
      appendEntries(tables, value.get_array());
    } else if (value.is_object()) {
      tables += '\n' + capitals(name) + '\n' + statsTables(value.get_object());
    } else {
      single.push_back({{printable(name), false}, cellOf(value)});
    }
  }
  std::string out;
  if (!single.empty()) {
    appendTable(out, single);
  }
  return out + tables;
}

}  // namespace Host
