// One call of a declaration in a model, with its inputs given as values: what the routine
// computes, its refusals, and its analytic derivatives against central differences.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "procedure_test_support.hpp"

namespace zx_test {

// One input of a call: a real scalar or array of variables, a real or integer constant, or a text.
struct In {
    std::vector<double> values;
    std::vector<int> dims;   // empty: scalar
    enum Kind { Real, Constant, Integer, Text } kind = Real;
    const char* text = nullptr;
};
inline In Scalar(double v) { return In{{v}, {}}; }
inline In Constant(double v) { return In{{v}, {}, In::Constant}; }
inline In Integer(int v) { return In{{static_cast<double>(v)}, {}, In::Integer}; }
inline In Text(const char* t) { return In{{}, {}, In::Text, t}; }
inline In Array(std::vector<double> v, std::vector<int> dims) { return In{std::move(v), std::move(dims)}; }

// A model with one call of declaration D over the given inputs and outputs (each output a list
// of dimension sizes, empty for a scalar).
template <class D>
class DeclarationCall : public ProcedureHarness {
public:
    // components: the session's default component list, for declarations that take one.
    DeclarationCall(std::vector<In> inputs, std::vector<std::vector<int>> outputs, std::vector<std::string> components = {})
        : m_inputs(std::move(inputs)) {
        if (!components.empty()) session->DefineComponentList("COMPONENTS", std::move(components));
        for (const In& in : m_inputs) {
            std::vector<VX_REALVARIABLE*> vars;
            if (in.kind == In::Real)
                for (double v : in.values) vars.push_back(&Var(v)), m_variables.push_back(vars.back());
            m_inputVars.push_back(vars);
        }
        for (const auto& dims : outputs) {
            int n = 1;
            for (int d : dims) n *= d;
            std::vector<VX_REALVARIABLE*> vars;
            for (int e = 0; e < n; ++e) vars.push_back(&Var(0.0));
            m_outputVars.emplace_back(dims, vars);
            m_outputCount += n;
        }
        model.calls.push_back([this](bool counting) {
            D* p;
            if constexpr (D::kDeclaration.componentList) p = new D(counting, 0, model.ComponentList());
            else p = new D(counting, 0);
            for (std::size_t a = 0; a < m_inputs.size(); ++a) {
                const In& in = m_inputs[a];
                if (in.kind == In::Text) p->Argument(in.text);
                else if (in.kind == In::Integer) p->Argument(static_cast<int>(in.values[0]));
                else if (in.kind == In::Constant) p->Argument(in.values[0]);
                else Give(*p, in.dims, m_inputVars[a]);
            }
            for (auto& [dims, vars] : m_outputVars) Give(*p, dims, vars);
            return p;
        });
        status = Declare();
    }

    // The routine's outputs, or the failure status.
    std::vector<double> Outputs() {
        std::vector<double> r(static_cast<std::size_t>(pattern.equations), 0.0);
        last = model.Residuals(r.data(), 0, 0);
        std::vector<double> f;
        for (int k = 0; k < m_outputCount; ++k) f.push_back(-r[static_cast<std::size_t>(1 + k)]);
        return f;
    }
    // d output o / d variable input j from the Jacobian rows.
    std::vector<std::vector<double>> Derivatives() {
        std::vector<double> v(static_cast<std::size_t>(pattern.nonzeros), 0.0);
        last = model.Jacobian(v.data(), 0, 0);
        const std::size_t nv = m_variables.size();
        std::vector<std::vector<double>> d(static_cast<std::size_t>(m_outputCount), std::vector<double>(nv));
        for (std::size_t o = 0; o < d.size(); ++o)
            for (std::size_t j = 0; j < nv; ++j) d[o][j] = -v[1 + o * (nv + 1) + 1 + j];
        return d;
    }
    // Analytic derivatives against central differences of the outputs, variable by variable.
    void ExpectDerivativesAgree(double tolerance = 1e-6) {
        const auto analytic = Derivatives();
        ASSERT_GE(last, 0) << session->LastFailure().message;
        for (std::size_t j = 0; j < m_variables.size(); ++j) {
            VX_REALVARIABLE& v = *m_variables[j];
            const double x = v.fv(), h = 1e-6 * std::max(1.0, std::fabs(x));
            v.SetSolverValue(x + h);
            const auto up = Outputs();
            v.SetSolverValue(x - h);
            const auto down = Outputs();
            v.SetSolverValue(x);
            for (std::size_t o = 0; o < up.size(); ++o) {
                const double numeric = (up[o] - down[o]) / (2 * h);
                EXPECT_NEAR(analytic[o][j], numeric, tolerance * std::max(1.0, std::fabs(numeric))) << "output " << o << " input " << j;
            }
        }
    }

    int status = 0;
    int last = 0;

private:
    static void Give(VX_ProcedureType& p, const std::vector<int>& dims, const std::vector<VX_REALVARIABLE*>& vars) {
        if (dims.empty()) {
            p.Argument(*vars[0]);
            return;
        }
        p.Argument();
        for (int d : dims) p.SetDimensionSize(d);
        for (auto* v : vars) p.Element(*v);
    }

    std::vector<In> m_inputs;
    std::vector<std::vector<VX_REALVARIABLE*>> m_inputVars;
    std::vector<std::pair<std::vector<int>, std::vector<VX_REALVARIABLE*>>> m_outputVars;
    std::vector<VX_REALVARIABLE*> m_variables;   // variable input elements in order
    int m_outputCount = 0;
};

// The outputs of one call, or its failure status and text.
template <class D>
std::vector<double> Call(std::vector<In> inputs, std::vector<std::vector<int>> outputs = {{}}, std::vector<std::string> components = {}) {
    DeclarationCall<D> c(std::move(inputs), std::move(outputs), std::move(components));
    EXPECT_GE(c.status, 0) << c.session->LastFailure().message;
    auto f = c.Outputs();
    EXPECT_GE(c.last, 0) << c.session->LastFailure().message;
    return f;
}
template <class D>
std::string Refusal(std::vector<In> inputs, int status = VX_E_ROUTINE_FAILED, std::vector<std::string> components = {}) {
    DeclarationCall<D> c(std::move(inputs), {{}}, std::move(components));
    c.Outputs();
    EXPECT_EQ(c.last, status) << c.session->LastFailure().message;
    return c.session->LastFailure().message;
}
template <class D>
void DerivativesAgree(std::vector<In> inputs, std::vector<std::vector<int>> outputs = {{}}, std::vector<std::string> components = {}) {
    DeclarationCall<D> c(std::move(inputs), std::move(outputs), std::move(components));
    c.ExpectDerivativesAgree();
}

}  // namespace zx_test
