// SPDX-License-Identifier: Apache-2.0
// Table: aligned columns, with lines of remarks below rows.

#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "simulator/camerasim/Looks.h"

namespace orvo::simulator {

/** A cell of a table. */
struct Cell {
    Cell(std::string words, Paint how = Paint::PLAIN) : text(std::move(words)), paint(how) {}
    Cell(const char* words) : text(words) {}

    std::string text;  ///< one line of UTF-8; what is empty is shown as "-"
    Paint paint = Paint::PLAIN;
};

class Table {
  public:
    explicit Table(std::vector<std::string> heads) : mHeads(std::move(heads)) {}

    /** As many cells as there are heads. */
    void addRow(std::vector<Cell> cells);
    /** A line below the row that was added last, or below the heads. */
    void addRemark(const std::string& text);
    bool empty() const { return mRows.empty(); }

    /** The heads are written even if there is no row. */
    void print(std::ostream& out, bool colour) const;

  private:
    struct Row {
        std::vector<Cell> cells;  ///< empty for a remark
        std::string remark;
    };

    std::vector<size_t> widths() const;

    const std::vector<std::string> mHeads;
    std::vector<Row> mRows;
};

}  // namespace orvo::simulator
