#pragma once
// VX_Script: a model script's store, the text a model hands its host to run on request (to
// initialise signals from connected variables, say). A store is made from a list: the script's
// name, then its lines; each line ends in a line feed in the text. A list of stores ends with an
// empty store (index -1, length 0).
#include <string>

class VX_Script {
public:
    // The end of a list of stores.
    VX_Script() = default;
    // list[0] is the name, list[1 .. count-1] the lines; index is the store's position among a
    // class's scripts (from 0) and length the characters of the text, line feeds included.
    VX_Script(const char* const* list, int count, int index, int length);

    const std::string& Name() const { return m_name; }
    int Index() const { return m_index; }
    int Length() const { return m_length; }
    const wchar_t* Text() const { return m_text.c_str(); }

    // In a list of stores ended by an empty one: the text of the script named `name` (compared
    // without regard to case), or, when name is null, of the store at `index`; null when none.
    static const wchar_t* Find(const VX_Script* stores, const char* name, int index);

private:
    std::string m_name;
    std::wstring m_text;
    int m_index = -1;
    int m_length = 0;
};
