#include "text_table.hpp"

#include <algorithm>

#include <fmt/format.h>

namespace zorexp_cli {
namespace {

// Width on screen of UTF-8 text: continuation bytes take no column.
std::size_t Width(const std::string& s) {
    return static_cast<std::size_t>(std::count_if(s.begin(), s.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

void AppendLine(std::string& out, const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t k = 0; k < widths.size(); ++k) {
        const std::string& cell = k < cells.size() ? cells[k] : std::string();
        line += k + 1 < widths.size() ? fmt::format("{:<{}}  ", cell, widths[k]) : cell;
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out += line + "\n";
}

}  // namespace

std::string TextTable::Render() const {
    std::vector<std::size_t> widths(m_headers.size());
    for (std::size_t k = 0; k < m_headers.size(); ++k) widths[k] = Width(m_headers[k]);
    for (const auto& row : m_rows)
        for (std::size_t k = 0; k < row.size() && k < widths.size(); ++k) widths[k] = std::max(widths[k], Width(row[k]));
    std::string out;
    AppendLine(out, m_headers, widths);
    std::vector<std::string> rule;
    for (std::size_t w : widths) rule.push_back(std::string(w, '-'));
    AppendLine(out, rule, widths);
    for (const auto& row : m_rows) AppendLine(out, row, widths);
    return out;
}

}  // namespace zorexp_cli
