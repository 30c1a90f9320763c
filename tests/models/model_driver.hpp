// Drives a model object, with everything it contains, through the container protocol with the
// runtime's driver, in a session of its own.
#pragma once

#include <string>
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

// One block brought through the protocol as a flowsheet would: its global references linked,
// settings (user values) applied, two rounds of SetDims and ExecuteAssignments (arrays are
// sized over sets the assignments make), the equations and their pattern. status is the first
// failure, or the last result.
struct BlockUnderTest {
    VX_ProtocolDriver driver;
    int status = 0;

    template <class Settings>
    BlockUnderTest(VX_ModelType& m, Settings&& settings) {
        driver.AddBlock(m);
        status = LinkGlobals(driver);
        settings();
        for (int round = 0; round < 2 && status >= 0; ++round) {
            status = driver.SetDims();
            if (status >= 0) status = driver.ExecuteAssignments(10, VX_CTX_MODEL);
        }
        if (status >= 0) status = driver.SetUpEquations();
        if (status < 0) return;
        std::vector<int> rows(static_cast<std::size_t>(driver.Entries())), cols(rows.size());
        status = driver.JacPattern(rows.data(), cols.data());
    }
    explicit BlockUnderTest(VX_ModelType& m) : BlockUnderTest(m, [] {}) {}

    std::vector<double> Residuals() {
        std::vector<double> r(static_cast<std::size_t>(driver.Rows()));
        status = driver.Residuals(r.data());
        return r;
    }
    std::vector<double> Jacobian() {
        std::vector<double> j(static_cast<std::size_t>(driver.Entries()));
        status = driver.Jacobian(j.data());
        return j;
    }
    std::vector<std::string> Labels() const {
        std::vector<std::string> labels;
        for (int row = 0; row < driver.Rows(); ++row) labels.emplace_back(driver.RowLabel(row));
        return labels;
    }
    std::string Failure() const { return driver.LastFailure().message; }
};
