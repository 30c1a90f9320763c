#pragma once
// VX_Connection: joins an outlet port to an inlet port. The variables of the two ports are
// matched by name (array elements by index); each matched pair is one equation of the
// connection, outlet value - inlet value = 0, in a group of its own. Both ends keep their own
// variables, so each block stays whole and can be solved alone, and a value fixed at both ends
// shows up as an over-specified connection equation naming both.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "zorexp/model_type.hpp"

class VX_Variable;

class VX_Connection : public VX_ModelType {
public:
    // Checks and joins the ports; null with *why set when they cannot be joined (one is joined
    // already, both are outlets or both inlets, or neither type derives from the other). name
    // gives the ports' names for the message (by default their paths in their blocks).
    static VX_Connection* Make(VX_PortType& from, VX_PortType& to, std::string* why,
                               const std::function<std::string(const VX_Type&)>& name = {});
    ~VX_Connection() override;
    VX_Connection(const VX_Connection&) = delete;
    VX_Connection& operator=(const VX_Connection&) = delete;

    VX_PortType& From() const { return *m_from; }
    VX_PortType& To() const { return *m_to; }
    // Matches the ports' variables as the ports are sized now, and marks them ISMATCHED.
    void Match();
    const std::vector<std::pair<VX_Variable*, VX_Variable*>>& Pairs() const { return m_pairs; }
    // The name, within its port, of the variables of a pair ("T", "Z(WATER)").
    const std::string& PairName(std::size_t k) const { return m_names[k]; }

    const char* VX_DefaultDESCRIPTION() const override { return "Connection"; }
    int AddEquations() { return SetUpEquations(); }
    int SetUpEquations() override;
    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override;
    int Residuals(double* r, int group, int start) override;
    int Jacobian(double* values, int group, int start) override;

private:
    VX_Connection(VX_PortType& from, VX_PortType& to) : m_from(&from), m_to(&to) {}
    VX_PortType* m_from;
    VX_PortType* m_to;
    std::vector<std::pair<VX_Variable*, VX_Variable*>> m_pairs;
    std::vector<std::string> m_names;
    int m_group = 0;
};
