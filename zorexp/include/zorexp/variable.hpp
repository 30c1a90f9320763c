#pragma once
// Real variables: value, bounds and spec, and the defaults their types give them.
#include "zorexp/varparam.hpp"

class VX_Session;

class VX_Variable : public VX_VarParam {
public:
    // --- type defaults, in their slot order (the generated variable types override these)
    virtual int VX_PQCol() const;
    virtual int VX_PQRow() const;
    virtual bool IsDerivative() const { return false; }
    virtual bool IsRealVariable() const { return true; }
    virtual VX_Variable* VarPtr() { return this; }
    virtual const VX_Value* VX_DefaultDERIVATIVE() const;
    virtual const VX_Value* VX_DefaultSPEC() const;
    virtual const VX_Value* VX_DefaultVALUE() const;
    virtual double VX_LOWERValue() const { return m_lower; }
    virtual double VX_UPPERValue() const { return m_upper; }
    virtual VX_HRESULT VX_SetUOMSet(const char*) { return VX_E_NOTIMPL; }
    virtual const char* VX_UOMSetValue() const { return nullptr; }
    virtual bool IsState() const { return false; }
    virtual const VX_Value* VX_DefaultDIRECTION() const;
    virtual VX_HRESULT Direction(int* out) const { if (out) *out = 0; return VX_S_OK; }
    virtual const VX_Value* VX_DefaultISCONNECTED() const;
    virtual const VX_Value* VX_DefaultISMATCHED() const;
    virtual const VX_Value* VX_DefaultLLAGRANGE() const;
    virtual const VX_Value* VX_DefaultLOWER() const;
    virtual const VX_Value* VX_DefaultPHYSICALQUANTITY() const;
    virtual const VX_Value* VX_DefaultBASEUOMNAME() const;
    virtual const VX_Value* VX_DefaultRECORD() const;
    virtual const VX_Value* VX_DefaultSCALE() const;
    virtual const VX_Value* VX_DefaultTAG() const;
    virtual const VX_Value* VX_DefaultULAGRANGE() const;
    virtual const VX_Value* VX_DefaultUNITS() const;
    virtual const VX_Value* VX_DefaultUPPER() const;
    virtual const VX_Value* VX_DefaultISCONNECTEDASOUTPUT() const;
    virtual const VX_Value* VX_DefaultINTEGERPHYSICALQUANTITY() const;

    // Reads the (most-derived) defaults into value, bounds and spec. Called once, by the
    // constructor of the class actually being created.
    ~VX_Variable() override;

    void InitializeSystemAttributes();

    // Value with dependency recording (set-up) and fast value (Residuals, Jacobian).
    double v() const { RecordRead(); return *m_slot; }
    double fv() const { return *m_slot; }
    double Lower() const { return m_lower; }
    double Upper() const { return m_upper; }
    VX_SpecVarParamProp SPEC() { return {*this, VX_ATTR_SPEC}; }
    VX_SpecType CurrSpec() const { return static_cast<VX_SpecType>(m_spec); }
    // Time derivatives are not provided by this steady-state runtime.
    VX_Variable* DERIVATIVE() { return nullptr; }
    bool IsSolverVariable() const override { return true; }
    // Every variable, whatever its type, answers to the real-variable container id.
    bool ContainerDerivesFrom(const char* id) const override;

    // Solver access: sets the value without recording an assignment.
    void SetSolverValue(double x) { *m_slot = x; }
    // Arrays keep their elements' values side by side, so that equations read them like a
    // flat vector; such a variable's value lives in the array's slot instead of in itself.
    void BindValueSlot(double* slot) {
        *slot = *m_slot;
        m_slot = slot;
    }
    void UnbindValueSlot() {
        m_own = *m_slot;
        m_slot = &m_own;
    }
    // Where the address of the value is kept. It stays put for the variable's life, while the
    // address itself moves when an array re-seats its values: readers that keep it across
    // evaluations (procedure packing) read the value as **ValueSlotAddress().
    double* const* ValueSlotAddress() const { return &m_slot; }

protected:
    VX_Variable() : VX_VarParam(RealVariable) {}
    VX_Variable(const VX_Variable& o) : VX_VarParam(o), m_own(o.fv()), m_lower(o.m_lower), m_upper(o.m_upper) {}
    VX_Variable& operator=(const VX_Variable& o);

    double* m_slot = &m_own;   // where the value lives: m_own, or an array's value slot
    double m_own = 0.0;
    double m_lower = 0.0;
    double m_upper = 0.0;

    friend class VX_VarParam;
    friend class VX_VarParamProp;
};

// The runtime's real variable: the root of every variable type of a model library.
class VX_REALVARIABLE : public VX_Variable {
public:
    explicit VX_REALVARIABLE(bool initialize = true) { if (initialize) InitializeSystemAttributes(); }
    VX_REALVARIABLE(const VX_REALVARIABLE&) = default;
    VX_REALVARIABLE& operator=(const VX_REALVARIABLE& o) { VX_Variable::operator=(o); return *this; }
    VX_REALVARIABLE& operator*() { return *this; }
};
