// Writing results: numbers and texts byte for byte as printf and the JSON library wrote them,
// and output files that are replaced whole or not at all.
#include "flowsheet_test_support.hpp"

#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "flowsheet/output_buffer.hpp"
#include "flowsheet/output_file.hpp"

namespace zx::flowsheet {
namespace {

template <class Write>
std::string Written(Write write) {
    std::ostringstream out;
    {
        OutputBuffer buffer(out, 64);   // a small buffer: every piece crosses its end somewhere
        write(buffer);
    }
    return out.str();
}

TEST(ResultsWriting, NumbersAreWhatPrintfWrites) {
    const double kTiny = std::numeric_limits<double>::denorm_min();
    for (double v : {0.0, -0.0, 0.1, 1.0 / 3.0, 250.0, -8.8985e+00, 1e21, 1e-7, 123456789012345678.0, kTiny, 2.2250738585072014e-308,
                     std::numeric_limits<double>::max(), -std::numeric_limits<double>::infinity()}) {
        for (int precision : {10, 17}) {
            char expected[64];
            std::snprintf(expected, sizeof expected, "%.*g", precision, v);
            EXPECT_EQ(Written([&](OutputBuffer& b) { b.Number(v, precision); }), expected) << v;
            EXPECT_EQ(NumberWidth(v, precision), std::string(expected).size());
        }
    }
    EXPECT_EQ(Written([](OutputBuffer& b) { b.Number(std::nan(""), 17, true); }), "null");
}

TEST(ResultsWriting, TextsAreWhatTheJsonLibraryWritesAndValidCsv) {
    std::string every;
    for (int c = 1; c < 128; ++c) every += static_cast<char>(c);
    for (const std::string& s : {every, std::string("caf\xC3\xA9 \xF0\x9F\x98\x80"), std::string("T_CELL(3)"), std::string()})
        EXPECT_EQ(Written([&](OutputBuffer& b) { b.JsonString(s); }), Json(s).dump()) << s;
    // Bytes that are not UTF-8 become U+FFFD: the output stays valid JSON.
    EXPECT_EQ(Written([](OutputBuffer& b) { b.JsonString("a\xFF" "b"); }), "\"a\xEF\xBF\xBD" "b\"");

    EXPECT_EQ(Written([](OutputBuffer& b) { b.CsvField("plain"); }), "plain");
    EXPECT_EQ(Written([](OutputBuffer& b) { b.CsvField("a,\"b\"\nc"); }), "\"a,\"\"b\"\"\nc\"");
}

TEST(ResultsWriting, OutputFilesAreReplacedWholeOrNotAtAll) {
    testing::TempFile target("old\n", ".csv");
    ::chmod(target.Path().c_str(), 0640);
    std::string why;
    {
        auto file = OutputFile::Create(target.Path(), why);
        ASSERT_TRUE(file) << why;
        file->Stream() << "new\n";
    }   // not committed: the target keeps its content, and no temporary file is left
    std::stringstream kept;
    kept << std::ifstream(target.Path()).rdbuf();
    EXPECT_EQ(kept.str(), "old\n");
    EXPECT_EQ(testing::TemporaryFilesBeside(target.Path()), 0);

    auto file = OutputFile::Create(target.Path(), why);
    ASSERT_TRUE(file) << why;
    file->Stream() << "new\n";
    ASSERT_TRUE(file->Commit(why)) << why;
    std::stringstream replaced;
    replaced << std::ifstream(target.Path()).rdbuf();
    EXPECT_EQ(replaced.str(), "new\n");
    struct stat info {};
    ::stat(target.Path().c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640u);   // the file's own mode is kept

    // Devices are written directly; a full one fails at the commit.
    auto full = OutputFile::Create("/dev/full", why);
    ASSERT_TRUE(full) << why;
    full->Stream() << std::string(1 << 16, 'x');
    EXPECT_FALSE(full->Commit(why));
    EXPECT_NE(why.find("writing failed"), std::string::npos) << why;
}

}  // namespace
}  // namespace zx::flowsheet
