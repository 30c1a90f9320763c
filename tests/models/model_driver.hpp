// Drives model objects through the container protocol the way a host does, in a session of
// their own.
#pragma once

#include <vector>

#include "runtime/runtime.hpp"

// A session made current for the scope; objects numbered in it must die before it.
class ScopedSession {
public:
    ScopedSession() : m_previous(VX_Session::MakeCurrent(&m_session)) {}
    ~ScopedSession() { VX_Session::MakeCurrent(m_previous); }
    VX_Session& operator*() { return m_session; }
    VX_Session* operator->() { return &m_session; }

private:
    VX_Session m_session;
    VX_Session* m_previous;
};

// Sizes, assigns, and sizes again over the sets the assignments gave.
template <class Model>
void Prepare(Model& m, int level = 10) {
    m.SetDims();
    m.ExecuteAssignments(level, VX_CTX_MODEL);
    m.SetDims();
}

struct Pattern {
    int setUpResult = 0;      // SetUpEquations
    int equations = 0;        // CountEqnsAndNZs
    int nonzeros = 0;
    int patternResult = 0;    // JacPattern
    std::vector<int> rows, cols;
};

// Numbers the equations (groups from lastGroup on) and takes the Jacobian pattern.
template <class Model>
Pattern DeclareEquations(Model& m, VX_Session& session, int lastGroup = 0) {
    Pattern p;
    session.ResetNumbering();
    VX_ModelType::m_stLastGroup = lastGroup;
    p.setUpResult = m.SetUpEquations();
    m.CountEqnsAndNZs(p.equations, p.nonzeros);
    p.rows.assign(static_cast<std::size_t>(p.nonzeros), -1);
    p.cols.assign(static_cast<std::size_t>(p.nonzeros), -1);
    int* r = p.rows.data();
    int* c = p.cols.data();
    p.patternResult = m.JacPattern(r, c, nullptr);
    return p;
}

inline void SetUser(VX_VarParam& p, const VX_Value& v) { p.AssignUser(VX_ATTR_VALUE, v); }
