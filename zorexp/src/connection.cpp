#include "zorexp/connection.hpp"

#include "zorexp/arrays.hpp"
#include "zorexp/container.hpp"
#include "zorexp/variable.hpp"

namespace {

const char* DirectionWord(int d) { return d == 4 ? "an inlet" : d == 8 ? "an outlet" : "a port"; }

}  // namespace

VX_Connection* VX_Connection::Make(VX_PortType& from, VX_PortType& to, std::string* why,
                                   const std::function<std::string(const VX_Type&)>& name) {
    auto refuse = [&](std::string text) -> VX_Connection* {
        if (why) *why = std::move(text);
        return nullptr;
    };
    auto named = [&](const VX_Type& port) { return name ? name(port) : port.Path(); };
    const std::string a = named(from), b = named(to);
    if (&from == &to) return refuse("a port cannot be joined to itself");
    if (from.Partner()) return refuse(a + " is connected already (to " + named(*from.Partner()) + ")");
    if (to.Partner()) return refuse(b + " is connected already (to " + named(*to.Partner()) + ")");
    const int df = from.PortDirection(), dt = to.PortDirection();
    if (df == 4 || dt == 8)
        return refuse("a connection runs from an outlet to an inlet; " + a + " is " + DirectionWord(df) + " and " + b +
                      " is " + DirectionWord(dt));
    const char* fromId = from.VX_DefaultDESCRIPTION();
    const char* toId = to.VX_DefaultDESCRIPTION();
    if (!fromId || !toId || !(from.ContainerDerivesFrom(toId) || to.ContainerDerivesFrom(fromId)))
        return refuse("the port types do not fit: " + a + " is a " + from.TypeName() + ", " + b + " a " + to.TypeName());
    if (from.Connect(&to) < 0) return refuse(a + " and " + b + " cannot be joined");
    return new VX_Connection(from, to);
}

VX_Connection::~VX_Connection() {
    if (m_from->Partner() == m_to) m_from->Disconnect();
}

void VX_Connection::Match() {
    m_pairs.clear();
    m_names.clear();
    const VX_Value matched(true, VX_CTX_MODEL, 32767, 0);
    auto pair = [&](VX_Type* x, VX_Type* y, std::string name) {
        auto* vx = dynamic_cast<VX_Variable*>(x);
        auto* vy = dynamic_cast<VX_Variable*>(y);
        if (!vx || !vy) return;
        vx->ISMATCHED().Assign(&matched);
        vy->ISMATCHED().Assign(&matched);
        m_pairs.emplace_back(vx, vy);
        m_names.push_back(std::move(name));
    };
    for (const VX_PropertyEntry& p : m_from->Properties()) {
        VX_Type* other = m_to->FindProperty(p.name);
        if (!other) continue;
        auto* ax = dynamic_cast<VX_Matrix*>(p.object);
        auto* ay = dynamic_cast<VX_Matrix*>(other);
        if (ax && ay) {
            for (int k = 0; k < ax->Size(); ++k) {
                const std::string index = ax->IndexText(k);
                const std::ptrdiff_t at = ax->Dimensions() == 1 ? ay->PositionOfText(0, index.c_str()) : -1;
                if (at >= 0) pair(ax->At(k), ay->At(static_cast<int>(at)), std::string(p.name) + "(" + index + ")");
                else if (ax->Dimensions() > 1)
                    for (int j = 0; j < ay->Size(); ++j)
                        if (ay->IndexText(j) == index) pair(ax->At(k), ay->At(j), std::string(p.name) + "(" + index + ")");
            }
        } else if (!ax && !ay) {
            pair(p.object, other, p.name);
        }
    }
}

int VX_Connection::SetUpEquations() {
    int n = VX_ModelType::SetUpEquations();
    m_group = m_stLastGroup + 1;
    for (auto& [x, y] : m_pairs) {
        SetGroupLimits(m_group);
        ++n;
        AddNonZero(*x);
        AddNonZero(*y);
    }
    return SetLocalEqnCount(n);
}

int VX_Connection::JacPattern(int*& rows, int*& cols, VX_EquationType** types) {
    const int n = VX_ModelType::JacPattern(rows, cols, types);
    for (std::size_t k = 0; k < m_pairs.size(); ++k) {
        const int eqn = AddEquation(m_names[k].c_str(), types);
        RecordVariableTerm(*m_pairs[k].first, rows, cols, eqn);
        RecordVariableTerm(*m_pairs[k].second, rows, cols, eqn);
    }
    return n + 2 * static_cast<int>(m_pairs.size());
}

int VX_Connection::Residuals(double* r, int group, int start) {
    const int end = start + static_cast<int>(m_pairs.size());
    if (group != 0 && group != m_group) return end;
    int k = start;
    for (auto& [x, y] : m_pairs) r[k++] = x->fv() - y->fv();
    return end;
}

int VX_Connection::Jacobian(double* values, int group, int start) {
    const int end = start + 2 * static_cast<int>(m_pairs.size());
    if (group != 0 && group != m_group) return end;
    int k = start;
    for (std::size_t p = 0; p < m_pairs.size(); ++p) {
        values[k++] = 1.0;
        values[k++] = -1.0;
    }
    return end;
}
