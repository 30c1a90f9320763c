#pragma once
// Plain-text tables with aligned columns.
#include <string>
#include <vector>

namespace zorexp_cli {

class TextTable {
public:
    explicit TextTable(std::vector<std::string> headers) : m_headers(std::move(headers)) {}
    void AddRow(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
    bool Empty() const { return m_rows.empty(); }
    // The table with a header line and a rule under it; trailing blanks trimmed.
    std::string Render() const;

private:
    std::vector<std::string> m_headers;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace zorexp_cli
