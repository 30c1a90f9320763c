// The export table of the library and the per-type data, compared with the registry.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "frame/jac_data.hpp"
#include "frame/registry.hpp"
#include "loaded_library.hpp"

namespace {

// Name -> nm symbol type letter of every defined dynamic symbol of the built library.
std::map<std::string, char> DynamicSymbols() {
    const std::string command = std::string("nm -D --defined-only ") + VX_MODEL_LIBRARY_PATH;
    std::map<std::string, char> symbols;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return symbols;
    char line[512];
    while (std::fgets(line, sizeof line, pipe)) {
        char address[64], type = 0, name[400];
        if (std::sscanf(line, "%63s %c %399s", address, &type, name) != 3) continue;
        // Sanitizer builds add an ODR indicator beside every exported variable.
        if (std::strncmp(name, "__odr_asan", 10) == 0) continue;
        symbols[name] = type;
    }
    pclose(pipe);
    return symbols;
}

}  // namespace

TEST(Exports, LibraryExportsExactlyTheEntriesAndFourPerCreatableType) {
    const std::map<std::string, char> symbols = DynamicSymbols();
    ASSERT_FALSE(symbols.empty()) << "nm gave nothing";

    std::map<std::string, bool> expected{{"KRInitialize", true}, {"GetDLLInitializationData", true},
                                         {"RegisterDummyOptionsHandler", true}};   // name -> is code
    for (const VX_RegistryEntry& e : VX_RegistryEntries()) {
        if (!e.exported) continue;
        expected[std::string(e.name) + "Factory"] = true;
        expected[std::string(e.name) + "PropertyInfo"] = true;
        expected[std::string("_JacData") + e.name] = false;
        expected[std::string("_Compatibility") + e.name] = false;
    }
    std::set<std::string> extra, missing;
    for (const auto& [name, type] : symbols)
        if (!expected.count(name)) extra.insert(name);
    for (const auto& [name, isCode] : expected) {
        auto it = symbols.find(name);
        if (it == symbols.end()) {
            missing.insert(name);
            continue;
        }
        EXPECT_EQ(it->second == 'T', isCode) << name << " has symbol type " << it->second;
    }
    EXPECT_TRUE(extra.empty()) << extra.size() << " unexpected, first: " << *extra.begin();
    EXPECT_TRUE(missing.empty()) << missing.size() << " missing, first: " << *missing.begin();
    EXPECT_EQ(symbols.size(), 3u + 4u * 147u);
}

TEST(Exports, PerTypeDataMatchesTheRegistry) {
    LoadedLibrary& lib = LoadedLibrary::Shared();
    using CellFn = void** (*)();
    std::set<void**> cells;
    for (const VX_RegistryEntry& e : VX_RegistryEntries()) {
        if (!e.exported) continue;
        SCOPED_TRACE(e.name);
        EXPECT_EQ(*static_cast<const std::int32_t*>(lib.Symbol(std::string("_Compatibility") + e.name)), 6);

        const auto* block = static_cast<const VX_JacDataBlock*>(lib.Symbol(std::string("_JacData") + e.name));
        EXPECT_EQ(block->words[0], 22);
        std::string id;
        for (std::size_t i = 1; i <= VX_JACDATA_ID_WORDS; ++i) {
            const std::int32_t w = block->words[i];
            EXPECT_TRUE(w >= 0 && w <= 255) << "word " << i;
            if (w != 0) {
                EXPECT_EQ(id.size() + 1, i) << "byte after the zero padding";
                id += static_cast<char>(w);
            }
        }
        EXPECT_EQ(id, e.containerId);

        // The cell is the host's: zero at first, writable, one per type, stable across calls.
        auto cellOf = lib.Function<CellFn>(std::string(e.name) + "PropertyInfo");
        void** cell = cellOf();
        EXPECT_EQ(*cell, nullptr);
        EXPECT_EQ(cellOf(), cell);
        EXPECT_TRUE(cells.insert(cell).second);
        *cell = cell;
    }
    for (void** cell : cells) {
        EXPECT_EQ(*cell, cell);
        *cell = nullptr;
    }
}
