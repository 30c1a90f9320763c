#include "zorexp/script.hpp"

#include "zorexp/text.hpp"

VX_Script::VX_Script(const char* const* list, int count, int index, int length)
    : m_name(count > 0 && list[0] ? list[0] : ""), m_index(index), m_length(length) {
    for (int k = 1; k < count; ++k) {
        // Script texts are plain ASCII; each byte is one character.
        for (const char* c = list[k]; c && *c; ++c) m_text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(*c)));
        m_text.push_back(L'\n');
    }
}

const wchar_t* VX_Script::Find(const VX_Script* stores, const char* name, int index) {
    for (const VX_Script* s = stores; s && s->m_index >= 0; ++s) {
        if (name ? VX_EqualCI(name, s->m_name.c_str()) : s->m_index == index) return s->Text();
    }
    return nullptr;
}
