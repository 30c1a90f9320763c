#pragma once
// VX_ModelType: equation bookkeeping shared by models, ports, streams and structures.
// A generated class numbers its equation groups from m_stLastGroup; the runtime keeps, per
// object, how many equations and Jacobian entries each group has, so that Residuals and
// Jacobian can skip groups that were not asked for.
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "zorexp/container.hpp"
#include "zorexp/session.hpp"
#include "zorexp/sets.hpp"

class VX_ProcedureType;

enum VX_ExprOp : int {
#define VX_EXPR_OP(name, code, arity) name = code,
#include "zorexp/expression_ops.def"
#undef VX_EXPR_OP
};

// Kind of an equation row, handed back through JacPattern's types argument.
class VX_EquationType {
public:
    enum Kind { Model, Procedure };
    explicit constexpr VX_EquationType(Kind k) : m_kind(k) {}
    Kind GetKind() const { return m_kind; }
    static VX_EquationType* ModelEquation();
    static VX_EquationType* ProcedureEquation();

private:
    Kind m_kind;
};

class VX_ModelType : public VX_Container {
public:
    // The last equation group number handed out, over all models of the flowsheet.
    static int m_stLastGroup;

    struct GroupInfo {
        int group;
        int equations;
        int nonzeros;
    };

    // --- set-up (SetUpEquations)
    // Opens (or continues) a group; every equation declared after it belongs to that group.
    void SetGroupLimits(int group);
    // Registers one Jacobian entry of the current equation.
    void AddNonZero(VX_Type& variable);
    void AddNonZero(VX_SetIter& iterator);
    // Records this object's running equation count; its result is SetUpEquations' result.
    int SetLocalEqnCount(int n);
    // Opens (or continues) a group and counts equations and Jacobian entries in it at once: the
    // equations of one procedure call.
    void AddToGroup(int group, int equations, int nonzeros);
    // Takes ownership of a bound procedure whose equations belong to group. Procedures are kept
    // in the order they are added, those of one group one after another, and live until the
    // next SetUpEquations or the object's end.
    void AddProcCall(VX_ProcedureType* proc, int group);
    // The id-th procedure (from 0) added for group, or null: the way Residuals, Jacobian and
    // JacPattern reach the procedures of a call statement.
    VX_ProcedureType* ProcedureEquation(int group, int id) const;

    // --- evaluation (Residuals, Jacobian)
    bool ContainsGroup(int group) const;
    void AddEqnsInGroup(int group, int& index) const;
    void AddNZsandProcsInGroup(int group, int& index) const;

    // --- pattern (JacPattern): starts one equation row and returns its row index. The label is
    // copied: the runtime keeps it.
    int AddEquation(const char* label, VX_EquationType** types);
    int AddEquation(VX_EquationType* type, const char* label, VX_EquationType** types);
    VX_HRESULT AddConditional(int) { return VX_E_NOTIMPL; }

    VX_HRESULT CountEqnsAndNZs(int& equations, int& nonzeros) const override;
    int MaxGroupNo() const override;

    // The root of every protocol chain: clears this object's bookkeeping and starts counts at 0
    // (SetUpEquations, JacPattern) or at the given start (Residuals, Jacobian).
    int SetUpEquations() override;
    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override;
    int Residuals(double*, int, int start) override { return start; }
    int Jacobian(double*, int, int start) override { return start; }
    int ExecuteAssignments(int, int) override { return VX_S_OK; }
    void SetDims() override {}

    // --- inspection (hosts)
    const std::vector<GroupInfo>& Groups() const { return m_groups; }
    int EquationCount() const { return m_equationCount; }
    // Labels of this object's rows in JacPattern order, run-length coded (label, count).
    const std::vector<std::pair<const char*, int>>& RowLabels() const { return m_rowLabels; }
    // The label of the k-th row of this object (k counted from 0).
    const char* RowLabel(int k) const;
    // Clears the set-up state (and frees the procedures) before a new SetUpEquations pass.
    void ResetEquations();
    ~VX_ModelType() override;

protected:
    VX_ModelType() = default;
    VX_ModelType(const VX_ModelType& o) : VX_Container(o) {}
    VX_ModelType& operator=(const VX_ModelType&) { return *this; }

    // Expression recording, shared by the extension interfaces of models, ports and structures.
    void RecordOp(int op, int eqn) { VX_Session::Current().Record(eqn, op); }
    void RecordTerm(int eqn) { VX_Session::Current().Record(eqn, -1); }
    void RecordVariableTerm(VX_Type& term, int*& rows, int*& cols, int eqn);

private:
    std::vector<GroupInfo> m_groups;
    int m_currentGroup = -1;   // index into m_groups of the group being declared
    int m_equationCount = 0;
    std::vector<std::pair<const char*, int>> m_rowLabels;
    // Owned procedures in the order added; m_procGroups holds (group, index of its first).
    std::vector<VX_ProcedureType*> m_procs;
    std::vector<std::pair<int, int>> m_procGroups;
};

// Reports that an operation of a model failed, with a message naming what (kept by the current
// session for the host), and returns the status the operation must return (VX_E_MODEL).
int VX_ReportFailure(const VX_Type& model, const char* operation, const char* message);
// The same for an exception a model operation caught: VX_E_SIZE_LIMIT for an array that would
// pass the session's limit of elements, VX_E_MODEL otherwise; `context` is added to the message.
int VX_ReportFailure(const VX_Type& model, const char* operation, const std::exception& e, const std::string& context = {});

// Expression interface: the runtime keeps an expression form of each equation, fed by
// JacPattern. Declared in its slot order.
class VX_ModelExtensions {
public:
    virtual int Compatibility() const = 0;
    virtual void ResetExpressions() = 0;
    virtual void AddOp(int op, int eqn) = 0;
    virtual void AddTerm(const VX_StrSetValue& value, int eqn) = 0;
    virtual void AddTerm(const VX_IntSetValue& value, int eqn) = 0;
    virtual void AddTerm(const VX_Value& setValue, int eqn) = 0;
    virtual void AddTerm(VX_SpecType spec, int eqn) = 0;
    virtual void AddTerm(const char* text, int eqn) = 0;
    virtual void AddTerm(double value, int eqn) = 0;
    virtual void AddTerm(int value, int eqn) = 0;
    virtual void AddTerm(VX_Type& term, int*& rows, int*& cols, int eqn) = 0;
    virtual void AddTerm(VX_IntegerSetIter& it, int*& rows, int*& cols, int eqn) = 0;
    virtual void AddTerm(VX_StringSetIter& it, int*& rows, int*& cols, int eqn) = 0;
    virtual VX_HRESULT AddCondExpress(int eqn) = 0;
    virtual VX_HRESULT EndCondExpress(int eqn) = 0;
    virtual VX_HRESULT Linearity(int eqn, int* linear) = 0;
    virtual VX_HRESULT Evaluate(int eqn, double* value) = 0;
    virtual VX_HRESULT ConcatLists() = 0;
    virtual VX_HRESULT AddProcExpression(int eqn) = 0;
    virtual VX_HRESULT GroupVars() = 0;
    virtual VX_HRESULT ActivityPattern() = 0;
    virtual VX_HRESULT JacEx(int eqn, double* values) = 0;

protected:
    ~VX_ModelExtensions() = default;
};

class VX_ModelDiscontinuity {
public:
    virtual bool HasDiscontinuity() const = 0;
    virtual VX_HRESULT EventReset() = 0;
    virtual bool Changed() const = 0;
    virtual bool Tripped() const = 0;

protected:
    ~VX_ModelDiscontinuity() = default;
};

class VX_ModelExtensions2 {
public:
    virtual VX_HRESULT Evaluate2(int eqn, double* value) = 0;
    virtual VX_HRESULT JacEx2(int eqn, double* values) = 0;

protected:
    ~VX_ModelExtensions2() = default;
};

// The expression interface implemented once over any of the bookkeeping bases.
template <class Base>
class VX_WithExpressions : public Base, public VX_ModelExtensions {
public:
    int Compatibility() const override { return 6; }
    void ResetExpressions() override {}
    void AddOp(int op, int eqn) override { this->RecordOp(op, eqn); }
    void AddTerm(const VX_StrSetValue&, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(const VX_IntSetValue&, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(const VX_Value&, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(VX_SpecType, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(const char*, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(double, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(int, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(VX_Type& term, int*& rows, int*& cols, int eqn) override { this->RecordVariableTerm(term, rows, cols, eqn); }
    void AddTerm(VX_IntegerSetIter&, int*&, int*&, int eqn) override { this->RecordTerm(eqn); }
    void AddTerm(VX_StringSetIter&, int*&, int*&, int eqn) override { this->RecordTerm(eqn); }
    VX_HRESULT AddCondExpress(int) override { return VX_E_NOTIMPL; }
    VX_HRESULT EndCondExpress(int) override { return VX_E_NOTIMPL; }
    VX_HRESULT Linearity(int, int*) override { return VX_E_NOTIMPL; }
    VX_HRESULT Evaluate(int, double*) override { return VX_E_NOTIMPL; }
    VX_HRESULT ConcatLists() override { return VX_E_NOTIMPL; }
    VX_HRESULT AddProcExpression(int) override { return VX_E_NOTIMPL; }
    VX_HRESULT GroupVars() override { return VX_E_NOTIMPL; }
    VX_HRESULT ActivityPattern() override { return VX_E_NOTIMPL; }
    VX_HRESULT JacEx(int, double*) override { return VX_E_NOTIMPL; }

    VX_HRESULT QueryInterface(const VX_GUID& iid, void** out) override {
        if (out && iid == VX_IID_ModelExtensions) {
            *out = static_cast<VX_ModelExtensions*>(this);
            this->AddRef();
            return VX_S_OK;
        }
        return Base::QueryInterface(iid, out);
    }

protected:
    VX_WithExpressions() = default;
    VX_WithExpressions(const VX_WithExpressions& o) : Base(o) {}
    VX_WithExpressions& operator=(const VX_WithExpressions& o) { Base::operator=(o); return *this; }
};

class VX_ModelTypeEx : public VX_WithExpressions<VX_ModelType>, public VX_ModelDiscontinuity {
public:
    bool HasDiscontinuity() const override { return false; }
    VX_HRESULT EventReset() override { return VX_S_OK; }
    bool Changed() const override { return false; }
    bool Tripped() const override { return false; }
    VX_HRESULT QueryInterface(const VX_GUID& iid, void** out) override;
    void AddNZsandProcsInGroup(int group, int& index) const { VX_ModelType::AddNZsandProcsInGroup(group, index); }

protected:
    VX_ModelTypeEx() = default;
    VX_ModelTypeEx(const VX_ModelTypeEx& o) : VX_WithExpressions<VX_ModelType>(o) {}
    VX_ModelTypeEx& operator=(const VX_ModelTypeEx& o) { VX_WithExpressions<VX_ModelType>::operator=(o); return *this; }
};

class VX_ModelTypeEx2 : public VX_ModelTypeEx, public VX_ModelExtensions2 {
public:
    VX_HRESULT Evaluate2(int, double*) override { return VX_E_NOTIMPL; }
    VX_HRESULT JacEx2(int, double*) override { return VX_E_NOTIMPL; }
    VX_HRESULT QueryInterface(const VX_GUID& iid, void** out) override;

protected:
    VX_ModelTypeEx2() = default;
    VX_ModelTypeEx2(const VX_ModelTypeEx2& o) : VX_ModelTypeEx(o) {}
    VX_ModelTypeEx2& operator=(const VX_ModelTypeEx2& o) { VX_ModelTypeEx::operator=(o); return *this; }
};

// Ports: typed connection points that exist only as members of models.
class VX_PortType : public VX_ModelType {
public:
    bool IsAPort() const override { return true; }
    // Joins this port to another (VX_Connection makes the equations that tie their variables):
    // both are marked connected. Refused when either is connected already.
    VX_HRESULT Connect(VX_PortType* other);
    VX_HRESULT Disconnect();
    VX_HRESULT RegisterNotifier(void*) { return VX_E_NOTIMPL; }
    VX_PortType* Partner() const { return m_partner; }
    // 4 for an inlet, 8 for an outlet, 12 for a port that may be either, 0 when its owner did not
    // say (the registration flags of the property that holds it, or its multiport's direction).
    int PortDirection() const;

protected:
    VX_PortType() = default;
    VX_PortType(const VX_PortType& o) : VX_ModelType(o) {}
    VX_PortType& operator=(const VX_PortType& o) { VX_ModelType::operator=(o); return *this; }
    ~VX_PortType() override {
        if (m_partner) m_partner->m_partner = nullptr;
    }
    // Sets the port's connection flag (the base-type library's generic port keeps it).
    virtual void MarkConnected(bool) {}

private:
    VX_PortType* m_partner = nullptr;   // never copied: connections belong to the original
};

class VX_PortTypeEx : public VX_WithExpressions<VX_PortType> {
protected:
    VX_PortTypeEx() = default;
    VX_PortTypeEx(const VX_PortTypeEx& o) : VX_WithExpressions<VX_PortType>(o) {}
    VX_PortTypeEx& operator=(const VX_PortTypeEx& o) { VX_WithExpressions<VX_PortType>::operator=(o); return *this; }
};

// Structures: shared blocks of parameters.
class VX_StructureType : public VX_ModelType {
public:
    bool IsStructureType() const override { return true; }

protected:
    VX_StructureType() = default;
    VX_StructureType(const VX_StructureType& o) : VX_ModelType(o) {}
    VX_StructureType& operator=(const VX_StructureType& o) { VX_ModelType::operator=(o); return *this; }
};

class VX_StructureTypeEx : public VX_WithExpressions<VX_StructureType> {
protected:
    VX_StructureTypeEx() = default;
    VX_StructureTypeEx(const VX_StructureTypeEx& o) : VX_WithExpressions<VX_StructureType>(o) {}
    VX_StructureTypeEx& operator=(const VX_StructureTypeEx& o) { VX_WithExpressions<VX_StructureType>::operator=(o); return *this; }
};
