// table.h - reads a tab-separated data file of a test folder (expected
// values generated once by a reference program).  Lines starting with '#'
// are comments; fields are taken exactly, blanks included.
#pragma once

#include <fstream>
#include <string>
#include <vector>

namespace testutil {

using Row = std::vector<std::string>;

inline std::vector<Row> read_table(const std::string& name) {
    std::vector<Row> rows;
    std::ifstream in(std::string(INTRINS_TEST_DIR) + "/" + name);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        Row r;
        std::size_t at = 0;
        for (;;) {
            std::size_t tab = line.find('\t', at);
            r.push_back(line.substr(at, tab == std::string::npos ? std::string::npos : tab - at));
            if (tab == std::string::npos) break;
            at = tab + 1;
        }
        rows.push_back(std::move(r));
    }
    return rows;
}

}  // namespace testutil
