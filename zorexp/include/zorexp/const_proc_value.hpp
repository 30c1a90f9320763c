#pragma once
// ConstProcValue: a constant argument of a procedure call (an integer, a real or a text), kept
// by the procedure from set-up on and packed into its fixed slot before every call.
#include <climits>
#include <string>

class ConstProcValue {
public:
    enum Kind : int { None, Integer_, Real_, String_ };

    ConstProcValue() = default;

    void Set(int v) { m_kind = Integer_; m_int = v; m_real = v; m_text.clear(); }
    void Set(double v) {
        m_kind = Real_;
        m_real = v;
        m_int = v > INT_MIN - 1.0 && v < INT_MAX + 1.0 ? static_cast<int>(v) : 0;   // NaN and overflow read as 0
        m_text.clear();
    }
    void Set(const char* v) { m_kind = String_; m_text = v ? v : ""; m_int = 0; m_real = 0.0; }

    Kind GetKind() const { return m_kind; }
    // Each reading converts a number to the form asked for (a real to an integer by
    // truncation); a text reads as 0, a number as text reads as "".
    int Integer() const { return m_int; }
    double Real() const { return m_real; }
    const char* String() const { return m_text.c_str(); }

private:
    Kind m_kind = None;
    int m_int = 0;
    double m_real = 0.0;
    std::string m_text;
};
