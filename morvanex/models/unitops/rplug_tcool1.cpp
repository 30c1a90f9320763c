#include "models/unitops/rplug_tcool1.hpp"

namespace {
enum CtypeEquation { kNoEquation = 0, kTCoolSpec = 1, kTCoolProf = 2 };
}

VX_RPLUG_TCOOL1::VX_RPLUG_TCOOL1(bool constructProperties)
    : VX_GENERICMODEL(false), NPTS(true), NRANGE(true), CTYPE(true), T_PROCESS(true), Q_FLUX(true), U(true),
      T_COOL(true), T_COOL_(true) {
    if (constructProperties) Construct();
}

VX_RPLUG_TCOOL1::VX_RPLUG_TCOOL1(const VX_RPLUG_TCOOL1& o)
    : VX_GENERICMODEL(o), NPTS(o.NPTS), NRANGE(o.NRANGE), CTYPE(o.CTYPE), T_PROCESS(o.T_PROCESS), Q_FLUX(o.Q_FLUX),
      U(o.U), T_COOL(o.T_COOL), T_COOL_(o.T_COOL_), m_firstGroup(o.m_firstGroup), m_localEqnCount(o.m_localEqnCount),
      m_localNZCount(o.m_localNZCount), m_ctypeEquation(o.m_ctypeEquation) {}

VX_RPLUG_TCOOL1& VX_RPLUG_TCOOL1::operator=(const VX_RPLUG_TCOOL1& o) {
    VX_GENERICMODEL::operator=(o);
    NPTS = o.NPTS;
    NRANGE = o.NRANGE;
    CTYPE = o.CTYPE;
    T_PROCESS = o.T_PROCESS;
    Q_FLUX = o.Q_FLUX;
    U = o.U;
    T_COOL = o.T_COOL;
    T_COOL_ = o.T_COOL_;
    m_firstGroup = o.m_firstGroup;
    m_localEqnCount = o.m_localEqnCount;
    m_localNZCount = o.m_localNZCount;
    m_ctypeEquation = o.m_ctypeEquation;
    return *this;
}

VX_RPLUG_TCOOL1::~VX_RPLUG_TCOOL1() = default;

void VX_RPLUG_TCOOL1::Construct() {
    VX_GENERICMODEL::Construct();
    VX_Type::AddProperty(&NPTS, this, "NPTS", "Number of cells", 0, 0);
    VX_Type::AddProperty(&NRANGE, this, "NRANGE", nullptr, 0, 0);
    VX_Type::AddProperty(&CTYPE, this, "CTYPE", "Type of Heating Option Used", 0, 0);
    VX_Type::AddProperty(&T_PROCESS, this, "T_PROCESS", "Process side tempeature", 0, 0);
    VX_Type::AddProperty(&Q_FLUX, this, "Q_FLUX", "Heat flux from process stream", 0, 0);
    VX_Type::AddProperty(&U, this, "U", "Heat transfer coefficient", 0, 0);
    VX_Type::AddProperty(&T_COOL, this, "T_COOL", "Coolant temperature", 0, 0);
    VX_Type::AddProperty(&T_COOL_, this, "T_COOL_", "Coolant temperature", 0, 0);
}

bool VX_RPLUG_TCOOL1::ContainerDerivesFrom(const char* id) const {
    return (id && VX_EqualCI(id, VX_ContainerId())) || VX_GENERICMODEL::ContainerDerivesFrom(id);
}

void VX_RPLUG_TCOOL1::SetDims() {
    T_PROCESS.SetDim(NRANGE);
    Q_FLUX.SetDim(NRANGE);
    T_COOL_.SetDim(NRANGE);
    VX_GENERICMODEL::SetDims();
}

int VX_RPLUG_TCOOL1::ExecuteAssignments(int level, int context) {
    const int base = VX_GENERICMODEL::ExecuteAssignments(level - 1, context);
    if (base < 0) return base;
    const VX_Value nrange(VX_IntSetValue(0, NPTS.v()), context, level, 1);
    NRANGE.Assign(&nrange);
    const VX_Value fixed(VX_SPEC_FIXED, context, level, 2);
    T_COOL.SPEC().Assign(&fixed);
    return base;
}

int VX_RPLUG_TCOOL1::SetUpEquations() {
    int n = VX_GENERICMODEL::SetUpEquations();
    if (n < 0) return n;
    m_firstGroup = VX_ModelType::m_stLastGroup;
    const int start = n;
    m_ctypeEquation = kNoEquation;
    // Equation 1 (group 1): Q_FLUX(i) = U * (T_PROCESS(i) - T_COOL) or, for a profile,
    // Q_FLUX(i) = U * (T_PROCESS(i) - T_COOL_(i)).
    if (SUValue::CompareCI("TCool-Spec", CTYPE.v()) == 0) {
        m_ctypeEquation = kTCoolSpec;
        VX_IntegerSetIter i(NRANGE);
        while (i.Next()) {
            SetGroupLimits(m_firstGroup + 1);
            ++n;
            AddNonZero(Q_FLUX(i));
            AddNonZero(U);
            AddNonZero(T_PROCESS(i));
            AddNonZero(T_COOL);
        }
    } else if (SUValue::CompareCI("TCool-Prof", CTYPE.v()) == 0) {
        m_ctypeEquation = kTCoolProf;
        VX_IntegerSetIter i(NRANGE);
        while (i.Next()) {
            SetGroupLimits(m_firstGroup + 1);
            ++n;
            AddNonZero(Q_FLUX(i));
            AddNonZero(U);
            AddNonZero(T_PROCESS(i));
            AddNonZero(T_COOL_(i));
        }
    }
    m_localEqnCount = n - start;
    return SetLocalEqnCount(n);
}

int VX_RPLUG_TCOOL1::Residuals(double* r, int group, int start) {
    int idx = VX_GENERICMODEL::Residuals(r, group, start);
    if (idx < 0) return idx;
    const int end = idx + m_localEqnCount;
    if (!ContainsGroup(group)) return end;

    if (group != 0 && group != m_firstGroup + 1) {
        AddEqnsInGroup(m_firstGroup + 1, idx);
    } else {
        // The equations run over NRANGE, the set the arrays are sized over: their value
        // vectors are read by position, in the set's order. k is a local copy of idx, whose
        // address is taken above and would keep it in memory through the loop.
        int k = idx;
        const double u = U.fv();
        const std::size_t n = NRANGE.fv().Size();
        const double* qFlux = Q_FLUX.ValuesOver(NRANGE);
        const double* tProcess = T_PROCESS.ValuesOver(NRANGE);
        if (m_ctypeEquation == kTCoolSpec) {
            const double tCool = T_COOL.fv();
            for (std::size_t p = 0; p < n; ++p) r[k++] = qFlux[p] - (tProcess[p] - tCool) * u;
        } else if (m_ctypeEquation == kTCoolProf) {
            const double* tCool = T_COOL_.ValuesOver(NRANGE);
            for (std::size_t p = 0; p < n; ++p) r[k++] = qFlux[p] - (tProcess[p] - tCool[p]) * u;
        }
        idx = k;
        if (group != 0) return end;
    }
    return group == 0 ? idx : end;
}

int VX_RPLUG_TCOOL1::Jacobian(double* values, int group, int start) {
    int idx = VX_GENERICMODEL::Jacobian(values, group, start);
    if (idx < 0) return idx;
    const int end = idx + m_localNZCount;
    if (!ContainsGroup(group)) return end;

    if (group != 0 && group != m_firstGroup + 1) {
        AddNZsandProcsInGroup(m_firstGroup + 1, idx);
    } else {
        int k = idx;   // a local copy, as in Residuals
        const double u = U.fv();
        const std::size_t n = NRANGE.fv().Size();
        const double* tProcess = T_PROCESS.ValuesOver(NRANGE);
        if (m_ctypeEquation == kTCoolSpec) {
            const double tCool = T_COOL.fv();
            for (std::size_t p = 0; p < n; ++p) {
                values[k++] = 1.0;                     // Q_FLUX(i)
                values[k++] = -(tProcess[p] - tCool);  // U
                values[k++] = -u;                      // T_PROCESS(i)
                values[k++] = u;                       // T_COOL
            }
        } else if (m_ctypeEquation == kTCoolProf) {
            const double* tCool = T_COOL_.ValuesOver(NRANGE);
            for (std::size_t p = 0; p < n; ++p) {
                values[k++] = 1.0;
                values[k++] = -(tProcess[p] - tCool[p]);
                values[k++] = -u;
                values[k++] = u;                       // T_COOL_(i)
            }
        }
        idx = k;
        if (group != 0) return end;
    }
    return group == 0 ? idx : end;
}

int VX_RPLUG_TCOOL1::JacPattern(int*& rows, int*& cols, VX_EquationType** types) {
    const int n = VX_GENERICMODEL::JacPattern(rows, cols, types);
    if (n < 0) return n;
    const int* const first = rows;
    if (m_ctypeEquation != kNoEquation) {
        const bool profile = m_ctypeEquation == kTCoolProf;
        const char* const label = profile ? "VX_Eqn2" : "VX_Eqn1";
        VX_IntegerSetIter i(NRANGE);
        while (i.Next()) {
            const int eqn = AddEquation(label, types);
            AddTerm(Q_FLUX(i), rows, cols, eqn);
            AddTerm(U, rows, cols, eqn);
            AddTerm(T_PROCESS(i), rows, cols, eqn);
            if (profile) AddTerm(T_COOL_(i), rows, cols, eqn);
            else AddTerm(T_COOL, rows, cols, eqn);
            AddOp(VX_OP_SUB, eqn);
            AddOp(VX_OP_MUL, eqn);
            AddOp(VX_OP_EQUATION, eqn);
        }
    }
    m_localNZCount = static_cast<int>(rows - first);
    return n + m_localNZCount;
}
