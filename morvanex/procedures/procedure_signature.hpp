#pragma once
// Reads a declaration's argument list at compile time: "R*, R*, R[1]* -> R[1]". Items are
// separated by commas, inputs from outputs by "->"; R real, I integer, S string; [n] the number
// of array dimensions; * an input written back; "(none)" no inputs. A malformed list stops the
// compilation of the declaration that carries it.
#include <array>
#include <cstddef>
#include <string_view>

#include "zorexp/procedure_type.hpp"

namespace vx_signature {

constexpr bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Calls f(item, isOutput) for every item of the list, items trimmed of blanks.
template <class F>
constexpr void ForEachItem(std::string_view sig, F&& f) {
    const std::size_t arrow = sig.find("->");
    if (arrow == std::string_view::npos) throw "argument list without ->";
    for (int side = 0; side < 2; ++side) {
        std::string_view part = side == 0 ? sig.substr(0, arrow) : sig.substr(arrow + 2);
        while (!part.empty() && IsBlank(part.front())) part.remove_prefix(1);
        while (!part.empty() && IsBlank(part.back())) part.remove_suffix(1);
        if (side == 0 && part == "(none)") continue;
        if (part.empty()) throw "empty side of an argument list";
        while (true) {
            const std::size_t comma = part.find(',');
            std::string_view item = part.substr(0, comma);
            while (!item.empty() && IsBlank(item.back())) item.remove_suffix(1);
            f(item, side == 1);
            if (comma == std::string_view::npos) break;
            part.remove_prefix(comma + 1);
            while (!part.empty() && IsBlank(part.front())) part.remove_prefix(1);
        }
    }
}

constexpr VX_ProcArgSpec ParseItem(std::string_view item, bool output) {
    VX_ProcArgSpec spec{};
    if (item.empty()) throw "empty argument";
    switch (item.front()) {
    case 'R': spec.type = VX_ARG_REAL; break;
    case 'I': spec.type = VX_ARG_INTEGER; break;
    case 'S': spec.type = VX_ARG_STRING; break;
    default: throw "argument type is not R, I or S";
    }
    item.remove_prefix(1);
    if (!item.empty() && item.front() == '[') {
        if (item.size() < 3 || item[1] < '1' || item[1] > '3' || item[2] != ']') throw "dimension count is not [1], [2] or [3]";
        spec.dims = static_cast<std::int8_t>(item[1] - '0');
        item.remove_prefix(3);
    }
    if (!item.empty() && item.front() == '*') {
        if (output) throw "an output cannot be written back";
        spec.writtenBack = true;
        item.remove_prefix(1);
    }
    if (!item.empty()) throw "unexpected text after an argument";
    if (output && spec.type != VX_ARG_REAL) throw "outputs are reals";
    return spec;
}

constexpr int Count(std::string_view sig, bool outputs) {
    int n = 0;
    ForEachItem(sig, [&](std::string_view, bool isOutput) { n += isOutput == outputs; });
    return n;
}

}  // namespace vx_signature

constexpr int VX_SignatureInputs(std::string_view sig) { return vx_signature::Count(sig, false); }
constexpr int VX_SignatureOutputs(std::string_view sig) { return vx_signature::Count(sig, true); }

// Sum of the arguments' dimension counts.
constexpr int VX_SignatureDims(std::string_view sig) {
    int n = 0;
    vx_signature::ForEachItem(sig, [&](std::string_view item, bool output) { n += vx_signature::ParseItem(item, output).dims; });
    return n;
}

// The arguments, inputs first.
template <std::size_t N>
constexpr std::array<VX_ProcArgSpec, N> VX_SignatureArgs(std::string_view sig) {
    std::array<VX_ProcArgSpec, N> args{};
    std::size_t k = 0;
    vx_signature::ForEachItem(sig, [&](std::string_view item, bool output) {
        if (k == N) throw "more arguments than counted";
        args[k++] = vx_signature::ParseItem(item, output);
    });
    if (k != N) throw "fewer arguments than counted";
    return args;
}
