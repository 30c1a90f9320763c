// Blank-filling and trimming of fixed-width fields, at the edges of the field and the buffer.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "frame/fixed_width_text.hpp"

TEST(FixedWidthText, BlankFillPadsFromTheZeroToTheEndOfTheFieldOnly) {
    char field[8] = {'a', 'b', '\0', 'x', 'y', 'z', '!', '#'};
    VX_BlankFill(field, 6);
    EXPECT_EQ(std::string(field, 8), "ab    !#");

    char full[4] = {'w', 'x', 'y', 'z'};   // exactly the width, no zero: untouched
    VX_BlankFill(full, 4);
    EXPECT_EQ(std::string(full, 4), "wxyz");

    char empty[3] = {'\0', 'q', 'q'};
    VX_BlankFill(empty, 0);
    EXPECT_EQ(std::string(empty, 3), std::string("\0qq", 3));
    VX_BlankFill(empty, 3);
    EXPECT_EQ(std::string(empty, 3), "   ");
    VX_BlankFill(nullptr, 5);
}

TEST(FixedWidthText, BlankFillRowsTreatsEachFieldOnItsOwn) {
    char rows[13] = "ab\0\0cdef\0ghi";   // fields "ab\0\0", "cdef", "\0ghi" and a guard byte
    VX_BlankFillRows(rows, 4, 3);
    EXPECT_EQ(std::string(rows, 12), "ab  cdef    ");
    EXPECT_EQ(rows[12], '\0');
    VX_BlankFillRows(rows, 4, 0);
    EXPECT_EQ(std::string(rows, 12), "ab  cdef    ");
}

TEST(FixedWidthText, TrimDropsTrailingBlanksAndStopsAtAZero) {
    EXPECT_STREQ(VX_TrimField("  ab  ", 6), "  ab");
    EXPECT_STREQ(VX_TrimField("abcdef", 4), "abcd");
    EXPECT_STREQ(VX_TrimField("ab c\0zz", 7), "ab c");
    EXPECT_STREQ(VX_TrimField("    ", 4), "");
    EXPECT_STREQ(VX_TrimField("abc", 0), "");
    EXPECT_STREQ(VX_TrimField(nullptr, 3), "");
}

TEST(FixedWidthText, TrimUsesOneBufferAndTruncatesLongFields) {
    const char* first = VX_TrimField("first", 5);
    const char* second = VX_TrimField("second ", 7);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "second");

    std::string longField(VX_TRIM_BUFFER_SIZE + 500, 'x');
    EXPECT_EQ(std::strlen(VX_TrimField(longField.data(), longField.size())), VX_TRIM_BUFFER_SIZE - 1);
    longField.replace(VX_TRIM_BUFFER_SIZE - 11, std::string::npos, std::string(511, ' '));
    EXPECT_EQ(std::strlen(VX_TrimField(longField.data(), longField.size())), VX_TRIM_BUFFER_SIZE - 11);
    std::string exact(VX_TRIM_BUFFER_SIZE - 1, 'y');
    EXPECT_EQ(std::string(VX_TrimField(exact.data(), exact.size())), exact);
}
