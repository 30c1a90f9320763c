#pragma once
// VX_ProcedureType: one bound call  call (outputs) = Proc(inputs)  of a model equation. It packs
// the inputs into one buffer of 8-byte words, calls the routine in its routine library when an
// input changed since the last call, and turns the outputs into residuals (output variable -
// computed value) and Jacobian rows (1 for the output variable, then one entry per input element
// that is a solver variable, from the routine's derivatives or from finite differences).
//
// Life of a procedure object (generated model code drives it from SetUpEquations):
//   1. Sizing: construct it, give every argument in declaration order (Argument overloads,
//      SetDimensionSize and Element for arrays). This fixes offsets, dimension sizes, the buffer
//      size and the element counts. A counting instance stops here: NZAndEqnContribution counts
//      its equations and Jacobian entries in the model's group, and the instance is destroyed.
//   2. LastArgument() on the kept instance makes the buffers (once) and then binds it: the element
//      references the sizing pass named are stored in order, checked against the declaration.
//      (A model may also repeat its argument sequence after LastArgument to bind again.)
//   3. CreateEquationsAndSetGroup(model, group, name) makes one equation per output element and
//      hands the procedure to the model, which owns it from then on (AddProcCall).
//   4. The model's JacPattern, Residuals and Jacobian reach it through
//      VX_ModelType::ProcedureEquation(group, id) and call JacPattern, Residuals and Jacobian.
// Mistakes in the argument sequence never write outside the procedure's tables: they are kept
// and reported by NZAndEqnContribution / CreateEquationsAndSetGroup as VX_E_PROCEDURE_BINDING,
// with the text the session's status channel keeps saying what was wrong.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zorexp/const_proc_value.hpp"
#include "zorexp/model_type.hpp"
#include "zorexp/status.hpp"

class VX_COMPONENTLISTNAME;
class VX_ProcedureEquationType;
class VX_VarParam;
class VX_Variable;
struct VX_RoutineLibrary;

// Element type codes of procedure arguments.
enum VX_ProcArgType : std::int8_t { VX_ARG_INTEGER = 2, VX_ARG_INTEGER2 = 3, VX_ARG_REAL = 4, VX_ARG_STRING = 5 };

// Characters of one string element in the buffer.
constexpr int VX_PROC_STRING_LENGTH = 40;

// One argument of a declaration.
struct VX_ProcArgSpec {
    std::int8_t type = VX_ARG_REAL;   // VX_ProcArgType
    std::int8_t dims = 0;             // 0 scalar, 1 vector, 2 matrix
    bool writtenBack = false;         // inputs: values the routine leaves in the slots go back to the model
};

// Everything fixed about a declaration: what the catalogue lists and the procedure object reads.
struct VX_ProcedureDeclaration {
    const char* name;            // "PSQRT"
    const char* library;         // "Morvanex": the routine library's name, without lib and .so
    const char* entry;           // "RX55IF_spsqrt"
    int version;                 // 1 or 2: dense routine; 4: sparse routine
    char language;               // 'F' or 'C'
    const char* signature;       // "R* -> R", as the catalogue writes it
    int inputs;
    int outputs;
    int dims;                    // sum of the arguments' dimension counts
    const VX_ProcArgSpec* args;  // inputs, then outputs
    bool derivatives;            // the routine returns analytic derivatives
    bool componentList;          // the constructor takes the model's component list
};

// Call types handed to CallFn. Residuals asks for 0 and Jacobian for 3; both become 4 when the
// routine returns derivatives (so one call serves both passes), else 0.
enum VX_CallType : int {
    VX_CALL_VALUES = 0,
    VX_CALL_PREPARE = 1,
    VX_CALL_INITIALISE = 2,
    VX_CALL_JACOBIAN = 3,
    VX_CALL_DERIVATIVES = 4,
};

// The resolved entry point of a routine: its library and its address (null until resolved).
struct DLLFunction {
    const VX_RoutineLibrary* library = nullptr;
    void* entry = nullptr;
};

// Told of every input element a routine wrote back into the model (see UnpackInputVars).
class VX_IncrementalUpdate {
public:
    virtual void InputWrittenBack(VX_VarParam& element) = 0;

protected:
    ~VX_IncrementalUpdate() = default;
};

// Per-argument tables that the declaration's template holds, sized at compile time.
struct VX_ProcedureTables {
    int* offsets;             // TotalArgs(): first word of each argument + LanguageBaseIndex()
    bool* byReference;        // TotalArgs(): a variable argument (true) or a constant (false)
    ConstProcValue* constants;  // TotalArgs()
    int* dimensionSizes;      // NDims (at least one cell): inputs' sizes, then outputs'
};

class VX_ProcedureType {
public:
    virtual ~VX_ProcedureType();
    VX_ProcedureType(const VX_ProcedureType&) = delete;
    VX_ProcedureType& operator=(const VX_ProcedureType&) = delete;

    // --- the declaration
    const VX_ProcedureDeclaration& Declaration() const { return *m_decl; }
    virtual const char* DLLName() const { return m_decl->library; }
    virtual const char* ProcedureName() const { return m_decl->entry; }
    virtual bool IsFortran() const = 0;
    virtual int LanguageBaseIndex() const = 0;
    int InputArgs() const { return m_decl->inputs; }
    int OutputArgs() const { return m_decl->outputs; }
    int TotalArgs() const { return m_decl->inputs + m_decl->outputs; }

    // --- hooks a declaration may replace (the runtime's defaults)
    static bool ReturnsDerivatives() { return false; }
    static bool AlwaysCall() { return false; }      // call even when no input changed
    static bool PostsetInputs() { return false; }   // write values the routine left in inputs back
    virtual bool PresetOutputs() const { return false; }   // present outputs go into the slots first
    virtual void CreateDerivatives() {}
    virtual void NegateDerivatives() {}
    virtual int Precall(bool) { return VX_S_OK; }
    virtual int Postcall(bool) { return VX_S_OK; }
    virtual VX_COMPONENTLISTNAME* ComponentListName() const { return m_list; }
    VX_IncrementalUpdate* UpdateController() const { return m_update; }
    void SetUpdateController(VX_IncrementalUpdate* u) { m_update = u; }

    // --- construction (sizing), then binding
    void SetMode(bool counting, int mode);
    bool IsCounting() const { return m_counting; }
    int Mode() const { return m_mode; }
    void Argument(const char* constant);
    void Argument(int constant);
    void Argument(double constant);
    void Argument(VX_StringSetIter& it);
    void Argument(VX_IntegerSetIter& it);
    void Argument(VX_VarParam& scalar);
    void Argument();                      // opens an array argument
    void SetDimensionSize(int n);
    void Element(VX_VarParam& element);
    void LastArgument();

    // Counts this call's equations (one per output element) and Jacobian entries (per output
    // element: the output variable and every input element that is a solver variable) in group
    // of model, adds the equations to eqns and returns the entries; negative on a binding error.
    int NZAndEqnContribution(VX_ModelType* model, int group, int& eqns);
    // Makes the equations "[a]" (scalar output argument a, from 1) or "[a_e]" (element e of an
    // array output, from 1) and hands this procedure to model (AddProcCall), which owns it from
    // then on whatever the result. equationName is the model's name for the call statement, used
    // in messages. Returns VX_S_OK, or VX_E_PROCEDURE_BINDING when the arguments did not match.
    int CreateEquationsAndSetGroup(VX_ModelType* model, int group, const char* equationName);

    // --- evaluation; every result below 0 is a failure, reported to the session with its text
    // One row per equation and its pattern entries: the output variable's column, then the
    // columns of the input elements that are solver variables. Returns the entries written.
    int JacPattern(VX_ModelType* model, int*& rows, int*& cols, VX_EquationType** types);
    // r[k] = output variable - computed output, for every output element; k always advances
    // past the outputs, also when the call fails.
    virtual int Residuals(double* r, int& k);
    // Row by row: 1, then one entry per input element that is a solver variable.
    virtual int Jacobian(double* J, int& k);
    // Performs the external call of type ct unless the buffer already holds its answer.
    int CallFn(int ct, bool checkOutputs);
    // -2 before the first call, -1 after a failed one, else the type of the last call.
    bool LastCall(int ct) const { return m_lastCall == ct; }

    // --- loading
    int EnsureCompatibleDLLLoaded(int version);
    int GetProcedureAddress(DLLFunction* f);
    int GetProcedure13Address(DLLFunction* f);

    // --- inspection
    int InputElements() const { return m_inputElements; }
    int OutputElements() const { return m_outputElements; }
    int VariableInputElements() const { return m_variableInputs; }
    int ReferencedInputElements() const { return m_referencedInputs; }
    const std::vector<VX_ProcedureEquationType>& Equations() const { return *m_equations; }
    const std::string& EquationName() const { return m_equationName; }
    const double* Buffer() const { return m_buffer.get(); }
    int BufferWords() const { return m_words; }
    const int* DimensionSizes() const { return m_tables.dimensionSizes; }
    int FirstOutputDimension() const { return m_firstOutputDim; }
    int GetOffset(int arg) const { return m_tables.offsets[arg] - m_baseIndex; }
    const int* GetOffsets(int arg) const { return m_tables.offsets + arg; }
    bool ByReference(int arg) const { return m_tables.byReference[arg]; }
    VX_VarParam* OutputVar(int element) const;
    // Text of the last failure of this procedure (also reported to the session).
    const std::string& FailureText() const { return m_failure; }

protected:
    VX_ProcedureType(const VX_ProcedureDeclaration& decl, int baseIndex, bool cStrings);
    // The template hands over its tables and the declaration's static hooks.
    void AttachTables(const VX_ProcedureTables& tables, bool returnsDerivatives, bool alwaysCall, bool postsetInputs);
    void SetComponentList(VX_COMPONENTLISTNAME* list) { m_list = list; }

    // Sizing and buffers. SetArg is false when the declaration has no further argument.
    bool SetArg(bool byRef);
    void SetOffset(int words) { m_tables.offsets[m_arg] = m_baseIndex + words; }
    void FinalizeConstruction(int firstOutputWord, int totalWords);
    void HandleDerivatives(bool negate);
    void InitializeCStrings();

    // Packing (the changed flag is set by any slot that receives a different value).
    void PackInputVars();
    void PackOutputVars();
    void UnpackInputVars();
    void PackVal(int arg, int value);
    void PackVal(int arg, double value);
    void PackVal(int arg, const char* value);
    void PackVarInteger(int arg);
    void PackVarReal(int arg);
    void PackVarString(int arg);
    void PackIntegerArray(int word, int elements);
    void PackRealArray(int word, int elements);
    void PackStringArray(int word, int elements);
    void PackStr(char* field, const char* text);
    void PackInteger(unsigned char* slot, int value);   // 4 bytes, as PackVal compares them
    int GetIntegerArg(int arg) const { return m_tables.constants[arg].Integer(); }
    double GetRealArg(int arg) const { return m_tables.constants[arg].Real(); }
    const char* GetStringArg(int arg) const { return m_tables.constants[arg].String(); }
    int CheckIFailAndOutputs(int status, int ct, bool checkOutputs);

private:
    struct BoundElement {
        VX_VarParam* object;
        double* const* slot;      // a variable's value address (see VX_Variable::ValueSlotAddress), else null
        std::uint8_t kind;        // VX_VarParam::Kind
        bool solverVariable;
    };
    // An element reference named while sizing the kept instance, bound by LastArgument.
    struct Pending {
        VX_VarParam* element;
        int arg;
        int inputIndex;           // its number among all input elements, -1 for outputs
    };

    std::string ArgName(int arg) const;   // "input 2", "output 1"
    void BindError(const std::string& what);
    void CloseArgument();
    void SetConstant(const ConstProcValue& value, bool numeric);
    void BindElement(VX_VarParam& element, int arg, int inputIndex);
    void BindPending();
    void FinishBinding();
    bool OutputArgument() const { return m_arg >= m_decl->inputs; }
    double ElementReal(const BoundElement& e) const;
    int ElementInteger(const BoundElement& e) const;
    const char* ElementString(const BoundElement& e) const;
    void WriteBack(VX_VarParam& element, const VX_Value& value);
    void CallRoutine(int ct, int& status);
    int FiniteDifferenceJacobian(double* J, int& k);
    int RefuseDerivatives();
    void RestoreAfterPerturbation();
    // Keeps "procedure NAME ... : what" (or what alone, already so made) as this procedure's and
    // the session's failure text; returns code.
    int Fail(int code, const std::string& what, bool describe = true) noexcept;
    std::string Describe() const;   // "procedure PSQRT in equation ... (library ..., entry point ...)"
    int ComponentListHandle() const;

    const VX_ProcedureDeclaration* m_decl;
    const int m_baseIndex;
    const bool m_cStrings;
    VX_ProcedureTables m_tables{};
    bool m_returnsDerivatives = false, m_alwaysCall = false, m_postsetInputs = false;
    bool m_counting = false;
    int m_mode = 0;
    VX_COMPONENTLISTNAME* m_list = nullptr;
    VX_IncrementalUpdate* m_update = nullptr;

    // Construction cursors.
    int m_arg = -1;
    int m_dimSlot = 0;
    int m_dimsLeft = 0;
    int m_product = 1;
    int m_words = 0;
    int m_firstOutputDim = 0;
    int m_firstOutputWord = 0;
    bool m_constructing = true;
    bool m_argClosed = true;
    int m_elementsGiven = 0;               // to the current argument
    int m_bindInputIndex = 0;              // input elements passed while binding again
    bool m_wantDerivatives = false;
    std::vector<int> m_argElements;        // element count of every argument
    std::vector<Pending> m_pending;

    // Counts.
    int m_inputElements = 0;               // constants included
    int m_referencedInputs = 0;
    int m_variableInputs = 0;
    int m_outputElements = 0;

    // Bound state.
    std::vector<BoundElement> m_elements;  // referenced inputs, then outputs
    std::vector<VX_Variable*> m_outputVars;
    std::vector<int> m_variableColumns;    // per variable input element: its input element number
    std::vector<VX_Variable*> m_variableInputVars;
    bool m_variableColumnsContiguous = false;   // m_variableColumns is 0, 1, 2, ...
    bool m_bound = false;
    std::size_t m_cursor = 0;              // next element reference while binding or packing
    std::unique_ptr<std::vector<VX_ProcedureEquationType>> m_equations;
    std::string m_equationName;
    VX_ModelType* m_owner = nullptr;       // the model it was handed to
    std::string m_bindError;
    std::string m_failure;

    // Buffers, made once by FinalizeConstruction.
    std::unique_ptr<double[]> m_buffer;
    std::vector<double> m_rawDerivatives;       // output elements x input elements
    std::vector<double> m_residualDerivatives;  // per output element: one per variable input element
    std::vector<double> m_work;
    std::vector<double> m_savedOutputs;
    std::vector<int> m_sparseRows, m_sparseColumns;
    DLLFunction m_dll;
    int m_listHandle = 0;       // the calling model's component list, for the host services
    int m_runtimeInteger = 0;   // the cell handed to the routine: the list handle
    bool m_changed = false;
    bool m_derivativesFinite = true;   // set by HandleDerivatives(true)
    int m_lastCall = -2;
};
