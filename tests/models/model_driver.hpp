// Drives a model object, with everything it contains, through the container protocol with the
// runtime's driver, in a session of its own.
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

// Binds external references to parameters to the session's globals of their names, as a
// flowsheet does.
inline std::int32_t LinkGlobals(VX_ProtocolDriver& d) {
    return d.LinkExternals([](VX_ModelType&, VX_ExternalBase& reference, const char* name) {
        return VX_SessionGlobalFor(reference, name);
    });
}

// As LinkGlobals, and every other reference gets its own stand-in (a block looked at alone).
inline std::int32_t LinkGlobalsAndStandIns(VX_ProtocolDriver& d) {
    return d.LinkExternals([](VX_ModelType&, VX_ExternalBase& reference, const char* name) {
        VX_Type* global = VX_SessionGlobalFor(reference, name);
        return global ? global : reference.StandIn();
    });
}

// The session's global structures (a reaction configuration) as blocks of the driver, before
// the blocks that read them.
inline void AddGlobalStructures(VX_ProtocolDriver& d, VX_Session& s) {
    for (const auto& [name, global] : s.Globals())
        if (auto* structure = dynamic_cast<VX_ModelType*>(global)) d.AddBlock(*structure);
}

// Sizes, assigns (the model at `level`), and sizes again over the sets the assignments gave.
inline std::int32_t Prepare(VX_ModelType& m, int level = 10) {
    VX_ProtocolDriver d;
    d.AddBlock(m);
    std::int32_t status = d.SetDims();
    if (status >= 0) status = d.ExecuteAssignments(level, VX_CTX_MODEL);
    if (status >= 0) status = d.SetDims();
    return status;
}

struct Pattern {
    int setUpResult = 0;      // rows, or the failure status of SetUpEquations
    int equations = 0;        // CountEqnsAndNZs of the model itself
    int nonzeros = 0;
    int patternResult = 0;    // entries, or the failure status of JacPattern
    std::vector<int> rows, cols;
    std::string failure;      // the driver's message when something failed
};

// Numbers the equations (groups after lastGroup) and takes the Jacobian pattern.
inline Pattern DeclareEquations(VX_ModelType& m, VX_Session&, int lastGroup = 0) {
    Pattern p;
    VX_ProtocolDriver d;
    d.AddBlock(m);
    d.Collect();
    const std::int32_t status = d.SetUpEquations(lastGroup);
    m.CountEqnsAndNZs(p.equations, p.nonzeros);
    p.setUpResult = status < 0 ? status : d.Rows();
    if (status < 0) {
        p.failure = d.LastFailure().message;
        return p;
    }
    p.rows.assign(static_cast<std::size_t>(d.Entries()), -1);
    p.cols.assign(static_cast<std::size_t>(d.Entries()), -1);
    const std::int32_t pattern = d.JacPattern(p.rows.data(), p.cols.data());
    p.patternResult = pattern < 0 ? pattern : d.Entries();
    if (pattern < 0) p.failure = d.LastFailure().message;
    return p;
}

inline void SetUser(VX_VarParam& p, const VX_Value& v) { p.AssignUser(VX_ATTR_VALUE, v); }
