#include "Table.h"

#include <algorithm>
#include <cstddef>

#include "printable.h"

namespace ORBO::tool {
namespace {

constexpr char kGap[] = "  ";
constexpr char kBold[] = "\x1b[1m";
constexpr char kPlain[] = "\x1b[0m";

// Continuation bytes of UTF-8 take no room.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
  }));
}

std::string Line(const Table::Row& row, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t column = 0; column < row.size(); ++column) {
    line.append(row[column]);
    if (column + 1 < row.size()) {
      line.append(widths[column] - Width(row[column]), ' ').append(kGap);
    }
  }
  return line;
}

}  // namespace

std::string Table::ToText(bool colours) const {
  std::vector<Row> lines = {header_};
  for (Row row : rows_) {
    for (std::string& cell : row) {
      cell = cell.empty() ? "-" : Printable(cell);
    }
    lines.push_back(std::move(row));
  }
  std::vector<std::size_t> widths(header_.size());
  for (const Row& line : lines) {
    for (std::size_t column = 0; column < line.size(); ++column) {
      widths[column] = std::max(widths[column], Width(line[column]));
    }
  }
  const std::string header = Line(lines.front(), widths);
  std::string text = (colours ? kBold + header + kPlain : header) + "\n";
  for (auto line = lines.begin() + 1; line != lines.end(); ++line) {
    text += Line(*line, widths) + "\n";
  }
  return text;
}

}  // namespace ORBO::tool
