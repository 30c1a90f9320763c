#pragma once
// Fixed-width character fields, as external routines exchange text: blank-padded, with no
// terminating zero of their own.
#include <cstddef>

// The capacity of the buffer VX_TrimField copies into, terminating zero included.
inline constexpr std::size_t VX_TRIM_BUFFER_SIZE = 1024;

// Turns a zero-terminated text in a field of width bytes into a blank-padded field: from the
// terminating zero on, every byte up to the end of the field becomes a blank. A field without
// a zero within width is left as it is.
void VX_BlankFill(char* field, std::size_t width);

// VX_BlankFill on each of count consecutive fields of width bytes.
void VX_BlankFillRows(char* fields, std::size_t width, std::size_t count);

// Copies a field of width bytes, up to a zero if it holds one, without its trailing blanks
// into one static buffer, terminates it and returns the buffer. The next call overwrites it.
// Only the first VX_TRIM_BUFFER_SIZE - 1 bytes of a longer field are taken (then trimmed).
const char* VX_TrimField(const char* field, std::size_t width);
