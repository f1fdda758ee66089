#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ORBO::tool {

// A table for people: a header line and columns as wide as their widest cell.
class Table {
 public:
  using Row = std::vector<std::string>;

  explicit Table(Row header) : header_(std::move(header)) {}

  // `row` has as many cells as the header.  An empty cell shows as "-".
  void Add(Row row) { rows_.push_back(std::move(row)); }

  // The lines; with `colours` the header stands out.
  std::string ToText(bool colours) const;

 private:
  Row header_;
  std::vector<Row> rows_;
};

}  // namespace ORBO::tool
