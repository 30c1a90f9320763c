// A test model in the shape generated models take, binding procedure calls the way their
// SetUpEquations, JacPattern, Residuals and Jacobian do. Statement 1 is the ordinary equation
// A = 2, statement 2 the call statement (one procedure per entry of `calls`, as a call over an
// index set makes), statement 3 the ordinary equation B = 3.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "procedures/procedure_declarations.hpp"
#include "runtime/runtime.hpp"

class CallModel : public VX_GENERICMODEL {
public:
    // Makes one procedure and gives it its argument sequence (sizing pass).
    using Binder = std::function<VX_ProcedureType*(bool counting)>;

    CallModel() : VX_GENERICMODEL(true), A(true), B(true) {
        VX_Type::AddProperty(&A, this, "A", nullptr, 0, 0);
        VX_Type::AddProperty(&B, this, "B", nullptr, 0, 0);
    }

    VX_REALVARIABLE A, B;
    std::vector<Binder> calls;
    int firstGroup = 0, localEquations = 0, localNonzeros = 0;

    int CallGroup() const { return firstGroup + 2; }

    int SetUpEquations() override {
        int n = VX_GENERICMODEL::SetUpEquations();
        if (n < 0) return n;
        firstGroup = VX_ModelType::m_stLastGroup;
        const int start = n;
        SetGroupLimits(firstGroup + 1);
        ++n;
        AddNonZero(A);
        for (const Binder& bind : calls) {
            std::unique_ptr<VX_ProcedureType> counting(bind(true));
            if (const int nz = counting->NZAndEqnContribution(this, CallGroup(), n); nz < 0) return nz;
            VX_ProcedureType* kept = bind(false);
            kept->LastArgument();
            if (const int s = kept->CreateEquationsAndSetGroup(this, CallGroup(), "CALL"); s < 0) return s;
        }
        SetGroupLimits(firstGroup + 3);
        ++n;
        AddNonZero(B);
        localEquations = n - start;
        return SetLocalEqnCount(n);
    }

    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override {
        const int n = VX_GENERICMODEL::JacPattern(rows, cols, types);
        if (n < 0) return n;
        const int* const first = rows;
        AddTerm(A, rows, cols, AddEquation("VX_Eqn1", types));
        for (int id = 0; VX_ProcedureType* p = ProcedureEquation(CallGroup(), id); ++id) p->JacPattern(this, rows, cols, types);
        AddTerm(B, rows, cols, AddEquation("VX_Eqn3", types));
        localNonzeros = static_cast<int>(rows - first);
        return n + localNonzeros;
    }

    int Residuals(double* r, int group, int start) override {
        return Walk(r, group, VX_GENERICMODEL::Residuals(r, group, start), localEquations, false);
    }
    int Jacobian(double* values, int group, int start) override {
        return Walk(values, group, VX_GENERICMODEL::Jacobian(values, group, start), localNonzeros, true);
    }

private:
    // The group walk of Residuals (jacobian false) and Jacobian (true).
    int Walk(double* out, int group, int idx, int count, bool jacobian) {
        if (idx < 0) return idx;
        const int end = idx + count;
        if (!ContainsGroup(group)) return end;
        for (int k = 1; k <= 3; ++k) {
            const int g = firstGroup + k;
            if (group != 0 && group != g) {
                if (jacobian) AddNZsandProcsInGroup(g, idx);
                else AddEqnsInGroup(g, idx);
                continue;
            }
            if (k == 2) {
                for (int id = 0; VX_ProcedureType* p = ProcedureEquation(g, id); ++id)
                    if (const int s = jacobian ? p->Jacobian(out, idx) : p->Residuals(out, idx); s < 0) return s;
            } else {
                out[idx++] = jacobian ? 1.0 : (k == 1 ? A.fv() - 2.0 : B.fv() - 3.0);
            }
            if (group != 0) return end;
        }
        return group == 0 ? idx : end;
    }
};
