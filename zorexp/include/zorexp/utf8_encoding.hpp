#pragma once
// Writing UTF-8 (reading and checking it is in text.hpp). Written out because the standard's
// converters are deprecated and readers and scripts need nothing more.
#include <string>

// Appends the UTF-8 bytes of one code point (below 0x110000) to out.
void VX_AppendUtf8(std::string& out, char32_t cp);
