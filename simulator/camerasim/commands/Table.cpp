// SPDX-License-Identifier: Apache-2.0
// Table: widths first, then lines; the last column is never padded.

#include "simulator/camerasim/commands/Table.h"

#include <algorithm>
#include <utility>

namespace orvo::simulator {

namespace {

constexpr char kGap[] = "  ";
constexpr char kRemarkMargin[] = "    ";

/** Characters, not bytes. */
size_t widthOf(const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; });
}

void printLine(std::ostream& out, const std::vector<Cell>& cells, const std::vector<size_t>& widths,
               bool colour) {
    for (size_t i = 0; i < cells.size(); i++) {
        out << painted(cells[i].text, cells[i].paint, colour);
        if (i + 1 == cells.size()) break;
        out << std::string(widths[i] - widthOf(cells[i].text), ' ') << kGap;
    }
    out << "\n";
}

}  // namespace

void Table::addRow(std::vector<Cell> cells) {
    for (Cell& cell : cells) {
        if (cell.text.empty()) cell = Cell("-", Paint::DIM);
    }
    mRows.push_back({std::move(cells), ""});
}

void Table::addRemark(const std::string& text) {
    mRows.push_back({{}, text});
}

std::vector<size_t> Table::widths() const {
    std::vector<size_t> widths;
    widths.reserve(mHeads.size());
    for (const std::string& head : mHeads) widths.push_back(widthOf(head));
    for (const Row& row : mRows) {
        for (size_t i = 0; i < row.cells.size(); i++) {
            widths[i] = std::max(widths[i], widthOf(row.cells[i].text));
        }
    }
    return widths;
}

void Table::print(std::ostream& out, bool colour) const {
    const std::vector<size_t> columns = widths();
    std::vector<Cell> heads;
    heads.reserve(mHeads.size());
    for (const std::string& head : mHeads) heads.emplace_back(head, Paint::BOLD);
    printLine(out, heads, columns, colour);
    for (const Row& row : mRows) {
        if (row.cells.empty()) {
            out << kRemarkMargin << painted(row.remark, Paint::YELLOW, colour) << "\n";
        } else {
            printLine(out, row.cells, columns, colour);
        }
    }
}

}  // namespace orvo::simulator
