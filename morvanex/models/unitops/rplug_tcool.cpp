#include "models/unitops/rplug_tcool.hpp"

namespace {
// The factors of a cell's duty, Q = A * B * C * D, formed in this order:
// A = mean cell temperature - T_COOL, B = DX * DIAM, C = PI * NTUBE, D = U * UCF6.
struct CellDuty {
    double a, b, c, d;
    double Value() const { return a * b * c * d; }
};
}  // namespace

VX_RPLUG_TCOOL::VX_RPLUG_TCOOL(bool constructProperties)
    : VX_GENERICMODEL(false), PI(), UCF6(), NPTS(true), NPOINTS(true), T_CELL0(true), T_CELL(true), Q(true), U(true),
      T_COOL(true), DIAM(true), NTUBE(true), L(true), DX(true) {
    if (constructProperties) Construct();
}

VX_RPLUG_TCOOL::VX_RPLUG_TCOOL(const VX_RPLUG_TCOOL& o)
    : VX_GENERICMODEL(o), PI(o.PI), UCF6(o.UCF6), NPTS(o.NPTS), NPOINTS(o.NPOINTS), T_CELL0(o.T_CELL0),
      T_CELL(o.T_CELL), Q(o.Q), U(o.U), T_COOL(o.T_COOL), DIAM(o.DIAM), NTUBE(o.NTUBE), L(o.L), DX(o.DX),
      m_firstGroup(o.m_firstGroup), m_localEqnCount(o.m_localEqnCount), m_localNZCount(o.m_localNZCount) {}

VX_RPLUG_TCOOL& VX_RPLUG_TCOOL::operator=(const VX_RPLUG_TCOOL& o) {
    VX_GENERICMODEL::operator=(o);
    PI = o.PI;
    UCF6 = o.UCF6;
    NPTS = o.NPTS;
    NPOINTS = o.NPOINTS;
    T_CELL0 = o.T_CELL0;
    T_CELL = o.T_CELL;
    Q = o.Q;
    U = o.U;
    T_COOL = o.T_COOL;
    DIAM = o.DIAM;
    NTUBE = o.NTUBE;
    L = o.L;
    DX = o.DX;
    m_firstGroup = o.m_firstGroup;
    m_localEqnCount = o.m_localEqnCount;
    m_localNZCount = o.m_localNZCount;
    return *this;
}

VX_RPLUG_TCOOL::~VX_RPLUG_TCOOL() = default;

void VX_RPLUG_TCOOL::Construct() {
    VX_GENERICMODEL::Construct();
    VX_GlobalBase::AddProperty(&PI, this, "PI", nullptr, 0, 0);
    VX_GlobalBase::AddProperty(&UCF6, this, "UCF6", nullptr, 0, 0);
    VX_Type::AddProperty(&NPTS, this, "NPTS", "Number of cells", 0, 0);
    VX_Type::AddProperty(&NPOINTS, this, "NPOINTS", nullptr, 0, 0);
    VX_Type::AddProperty(&T_CELL0, this, "T_CELL0", "Process side inlet tempeature", 0, 0);
    VX_Type::AddProperty(&T_CELL, this, "T_CELL", "Process side tempeature", 0, 0);
    VX_Type::AddProperty(&Q, this, "Q", "Process side duty", 0, 0);
    VX_Type::AddProperty(&U, this, "U", "Heat transfer coefficient", 0, 0);
    VX_Type::AddProperty(&T_COOL, this, "T_COOL", "Coolant temperature", 0, 0);
    VX_Type::AddProperty(&DIAM, this, "DIAM", "Reactor diameter", 0, 0);
    VX_Type::AddProperty(&NTUBE, this, "NTUBE", "Number of tubes", 0, 0);
    VX_Type::AddProperty(&L, this, "L", "Reactor length", 0, 0);
    VX_Type::AddProperty(&DX, this, "DX", nullptr, 0, 0);
}

bool VX_RPLUG_TCOOL::ContainerDerivesFrom(const char* id) const {
    return (id && VX_EqualCI(id, VX_ContainerId())) || VX_GENERICMODEL::ContainerDerivesFrom(id);
}

void VX_RPLUG_TCOOL::SetDims() {
    T_CELL.SetDim(NPOINTS);
    Q.SetDim(NPOINTS);
    VX_GENERICMODEL::SetDims();
}

int VX_RPLUG_TCOOL::ExecuteAssignments(int level, int context) {
    const int base = VX_GENERICMODEL::ExecuteAssignments(level - 1, context);
    if (base < 0) return base;
    const VX_Value pi(3.141593, context, level, 1);
    (*PI).Assign(&pi);
    const VX_Value ucf6(0.0036, context, level, 2);
    (*UCF6).Assign(&ucf6);
    const VX_Value npoints(VX_IntSetValue(1, NPTS.v()), context, level, 3);
    NPOINTS.Assign(&npoints);
    const VX_Value fixedU(VX_SPEC_FIXED, context, level, 4);
    U.SPEC().Assign(&fixedU);
    const VX_Value fixedTCool(VX_SPEC_FIXED, context, level, 5);
    T_COOL.SPEC().Assign(&fixedTCool);
    return base;
}

int VX_RPLUG_TCOOL::SetUpEquations() {
    int n = VX_GENERICMODEL::SetUpEquations();
    if (n < 0) return n;
    m_firstGroup = VX_ModelType::m_stLastGroup;
    const int start = n;
    // Equation 1: DX = L / NPTS.
    SetGroupLimits(m_firstGroup + 1);
    ++n;
    AddNonZero(DX);
    AddNonZero(L);
    // Equation 2, cell 1: Q(1) = ((T_CELL0 + T_CELL(1)) * 0.5 - T_COOL) * (DX * DIAM) * (PI * NTUBE) * (U * UCF6).
    SetGroupLimits(m_firstGroup + 2);
    ++n;
    AddNonZero(Q(1));
    AddNonZero(T_CELL0);
    AddNonZero(T_CELL(1));
    AddNonZero(T_COOL);
    AddNonZero(DX);
    AddNonZero(DIAM);
    AddNonZero(NTUBE);
    AddNonZero(U);
    // Equation 3, the other cells: the same with T_CELL(i - 1) as the cell's inlet.
    VX_IntegerSetIter i(NPOINTS);
    while (i.Next()) {
        if (i.v() == 1) continue;
        SetGroupLimits(m_firstGroup + 3);
        ++n;
        AddNonZero(Q(i));
        AddNonZero(T_CELL(i.v() - 1));
        AddNonZero(T_CELL(i));
        AddNonZero(T_COOL);
        AddNonZero(DX);
        AddNonZero(DIAM);
        AddNonZero(NTUBE);
        AddNonZero(U);
    }
    m_localEqnCount = n - start;
    return SetLocalEqnCount(n);
}

int VX_RPLUG_TCOOL::Residuals(double* r, int group, int start) {
    int idx = VX_GENERICMODEL::Residuals(r, group, start);
    if (idx < 0) return idx;
    const int end = idx + m_localEqnCount;
    if (!ContainsGroup(group)) return end;

    const double b = DX.fv() * DIAM.fv();
    const double c = (*PI).fv() * NTUBE.fv();
    const double d = U.fv() * (*UCF6).fv();
    if (group != 0 && group != m_firstGroup + 1) {
        AddEqnsInGroup(m_firstGroup + 1, idx);
    } else {
        r[idx++] = DX.fv() - L.fv() / static_cast<double>(NPTS.fv());
        if (group != 0) return end;
    }
    if (group != 0 && group != m_firstGroup + 2) {
        AddEqnsInGroup(m_firstGroup + 2, idx);
    } else {
        const CellDuty q{(T_CELL0.fv() + T_CELL.fv(1)) * 0.5 - T_COOL.fv(), b, c, d};
        r[idx++] = Q.fv(1) - q.Value();
        if (group != 0) return end;
    }
    if (group != 0 && group != m_firstGroup + 3) {
        AddEqnsInGroup(m_firstGroup + 3, idx);
    } else {
        const double tCool = T_COOL.fv();
        VX_IntegerSetIter i(NPOINTS);
        while (i.Next()) {
            if (i.fv() == 1) continue;
            const CellDuty q{(T_CELL.fv(i.fv() - 1) + T_CELL.fv(i.fv())) * 0.5 - tCool, b, c, d};
            r[idx++] = Q.fv(i.fv()) - q.Value();
        }
        if (group != 0) return end;
    }
    return group == 0 ? idx : end;
}

int VX_RPLUG_TCOOL::Jacobian(double* values, int group, int start) {
    int idx = VX_GENERICMODEL::Jacobian(values, group, start);
    if (idx < 0) return idx;
    const int end = idx + m_localNZCount;
    if (!ContainsGroup(group)) return end;

    const double dx = DX.fv(), diam = DIAM.fv(), pi = (*PI).fv(), ntube = NTUBE.fv(), u = U.fv(), ucf6 = (*UCF6).fv();
    const double b = dx * diam, c = pi * ntube, d = u * ucf6;
    // Derivatives of Q - A*B*C*D in the order Q, inlet, outlet, T_COOL, DX, DIAM, NTUBE, U.
    auto cell = [&](double a) {
        const double bcd = b * c * d;
        values[idx++] = 1.0;
        values[idx++] = -0.5 * bcd;
        values[idx++] = -0.5 * bcd;
        values[idx++] = bcd;
        values[idx++] = -a * diam * c * d;
        values[idx++] = -a * dx * c * d;
        values[idx++] = -a * b * pi * d;
        values[idx++] = -a * b * c * ucf6;
    };
    if (group != 0 && group != m_firstGroup + 1) {
        AddNZsandProcsInGroup(m_firstGroup + 1, idx);
    } else {
        values[idx++] = 1.0;                                     // DX
        values[idx++] = -1.0 / static_cast<double>(NPTS.fv());   // L
        if (group != 0) return end;
    }
    if (group != 0 && group != m_firstGroup + 2) {
        AddNZsandProcsInGroup(m_firstGroup + 2, idx);
    } else {
        cell((T_CELL0.fv() + T_CELL.fv(1)) * 0.5 - T_COOL.fv());
        if (group != 0) return end;
    }
    if (group != 0 && group != m_firstGroup + 3) {
        AddNZsandProcsInGroup(m_firstGroup + 3, idx);
    } else {
        const double tCool = T_COOL.fv();
        VX_IntegerSetIter i(NPOINTS);
        while (i.Next()) {
            if (i.fv() == 1) continue;
            cell((T_CELL.fv(i.fv() - 1) + T_CELL.fv(i.fv())) * 0.5 - tCool);
        }
        if (group != 0) return end;
    }
    return group == 0 ? idx : end;
}

int VX_RPLUG_TCOOL::JacPattern(int*& rows, int*& cols, VX_EquationType** types) {
    const int n = VX_GENERICMODEL::JacPattern(rows, cols, types);
    if (n < 0) return n;
    const int* const first = rows;
    // The right side of equations 2 and 3 after the cell's inlet and outlet temperatures:
    // ... * 0.5 - T_COOL, times (DX * DIAM), (PI * NTUBE) and (U * UCF6), left to right.
    auto cellDuty = [&](int eqn) {
        AddOp(VX_OP_ADD, eqn);
        AddTerm(0.5, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddTerm(T_COOL, rows, cols, eqn);
        AddOp(VX_OP_SUB, eqn);
        AddTerm(DX, rows, cols, eqn);
        AddTerm(DIAM, rows, cols, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddTerm(*PI, rows, cols, eqn);
        AddTerm(NTUBE, rows, cols, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddTerm(U, rows, cols, eqn);
        AddTerm(*UCF6, rows, cols, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddOp(VX_OP_MUL, eqn);
        AddOp(VX_OP_EQUATION, eqn);
    };
    {
        const int eqn = AddEquation("VX_Eqn1", types);
        AddTerm(DX, rows, cols, eqn);
        AddTerm(L, rows, cols, eqn);
        AddTerm(NPTS, rows, cols, eqn);
        AddOp(VX_OP_DIV, eqn);
        AddOp(VX_OP_EQUATION, eqn);
    }
    {
        const int eqn = AddEquation("VX_Eqn2", types);
        AddTerm(Q(1), rows, cols, eqn);
        AddTerm(T_CELL0, rows, cols, eqn);
        AddTerm(T_CELL(1), rows, cols, eqn);
        cellDuty(eqn);
    }
    VX_IntegerSetIter i(NPOINTS);
    while (i.Next()) {
        if (i.fv() == 1) continue;
        const int eqn = AddEquation("VX_Eqn3", types);
        AddTerm(Q(i), rows, cols, eqn);
        AddTerm(T_CELL(i.fv() - 1), rows, cols, eqn);
        AddTerm(T_CELL(i), rows, cols, eqn);
        cellDuty(eqn);
    }
    m_localNZCount = static_cast<int>(rows - first);
    return n + m_localNZCount;
}
