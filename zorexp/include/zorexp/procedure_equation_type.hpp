#pragma once
// VX_ProcedureEquationType: the row type of a procedure's equations, one per output element.
#include <string>

#include "zorexp/procedure_type.hpp"

// One equation of a procedure call: output element `number` (from 1) of the procedure.
class VX_ProcedureEquationType : public VX_EquationType {
public:
    VX_ProcedureEquationType(VX_ProcedureType* proc, int number, int group, VX_ModelType* model, std::string label)
        : VX_EquationType(VX_EquationType::Procedure), m_proc(proc), m_number(number), m_group(group), m_model(model),
          m_label(std::move(label)) {}
    VX_ProcedureType* Proc() const { return m_proc; }
    int Number() const { return m_number; }
    int Group() const { return m_group; }
    VX_ModelType* Model() const { return m_model; }
    const char* Label() const { return m_label.c_str(); }
    // Makes sure the procedure's buffer holds the outputs (and derivatives) for the present
    // inputs, before the equation is evaluated on its own.
    int Precall(bool derivatives) { return m_proc->CallFn(derivatives ? VX_CALL_JACOBIAN : VX_CALL_VALUES, true); }
    int Postcall(bool) { return VX_S_OK; }

private:
    VX_ProcedureType* m_proc;
    int m_number;
    int m_group;
    VX_ModelType* m_model;
    std::string m_label;
};
