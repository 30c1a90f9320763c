#include "zorexp/procedure_type.hpp"

#include <cmath>
#include <cstring>
#include <limits>

#include "zorexp/component_list.hpp"
#include "zorexp/parameters.hpp"
#include "zorexp/procedure_equation_type.hpp"
#include "zorexp/routine_library.h"
#include "zorexp/routine_loader.hpp"
#include "zorexp/session.hpp"
#include "zorexp/variable.hpp"

namespace {

// Bytes of one element of each argument type, as the routines see them.
int TypeSize(int type) { return type == VX_ARG_STRING ? VX_PROC_STRING_LENGTH : type == VX_ARG_REAL ? 8 : 4; }
int WordsFor(long long bytes) { return static_cast<int>((bytes + 7) / 8); }
// Words of the pointer table in front of a string array of the C flavour.
int PointerTableWords(int elements) { return WordsFor(static_cast<long long>(elements) * static_cast<long long>(sizeof(char*))); }
// An array argument may not hold more elements than this; larger sizes are binding errors.
constexpr int kMaxElements = 1 << 24;

const char* TypeName(int type) {
    return type == VX_ARG_STRING ? "a string" : type == VX_ARG_REAL ? "a real" : "an integer";
}

}  // namespace

VX_ProcedureType::VX_ProcedureType(const VX_ProcedureDeclaration& decl, int baseIndex, bool cStrings)
    : m_decl(&decl), m_baseIndex(baseIndex), m_cStrings(cStrings),
      m_equations(std::make_unique<std::vector<VX_ProcedureEquationType>>()) {}

VX_ProcedureType::~VX_ProcedureType() = default;

void VX_ProcedureType::AttachTables(const VX_ProcedureTables& tables, bool returnsDerivatives, bool alwaysCall,
                                    bool postsetInputs) {
    m_tables = tables;
    m_returnsDerivatives = returnsDerivatives;
    m_alwaysCall = alwaysCall;
    m_postsetInputs = postsetInputs;
    m_argElements.assign(static_cast<std::size_t>(TotalArgs()), 0);
}

void VX_ProcedureType::SetMode(bool counting, int mode) {
    m_counting = counting;
    m_mode = mode;
}

// The present value of a bound element. Defined inline ahead of their users: they run once per
// element of every call, and an out-of-line call would go through the library's PLT.
inline double VX_ProcedureType::ElementReal(const BoundElement& e) const {
    switch (e.kind) {
    case VX_VarParam::RealVariable: return **e.slot;
    case VX_VarParam::RealParameter: return static_cast<const VX_REALPARAMETER*>(e.object)->fv();
    case VX_VarParam::IntegerParameter: return static_cast<const VX_INTEGERPARAMETER*>(e.object)->fv();
    default: return 0.0;
    }
}

inline int VX_ProcedureType::ElementInteger(const BoundElement& e) const {
    if (e.kind == VX_VarParam::IntegerParameter) return static_cast<const VX_INTEGERPARAMETER*>(e.object)->fv();
    return static_cast<const VX_LOGICALPARAMETER*>(e.object)->fv() ? 1 : 0;
}

inline const char* VX_ProcedureType::ElementString(const BoundElement& e) const {
    return static_cast<const VX_STRINGPARAMETER*>(e.object)->fv();
}

// ---------------------------------------------------------------- sizing and binding

std::string VX_ProcedureType::ArgName(int arg) const {
    return arg < m_decl->inputs ? "input " + std::to_string(arg + 1) : "output " + std::to_string(arg - m_decl->inputs + 1);
}

void VX_ProcedureType::BindError(const std::string& what) {
    if (m_bindError.empty()) m_bindError = what;
}

bool VX_ProcedureType::SetArg(bool byRef) {
    CloseArgument();
    if (m_arg + 1 >= TotalArgs()) {
        BindError("more arguments given than the " + std::to_string(TotalArgs()) + " it declares");
        m_arg = TotalArgs();
        return false;
    }
    ++m_arg;
    m_argClosed = false;
    m_elementsGiven = 0;
    if (!m_constructing && m_arg == 0) {   // a model repeats its arguments: bind afresh
        m_elements.clear();
        m_outputVars.clear();
        m_variableColumns.clear();
        m_variableInputVars.clear();
        m_bindInputIndex = 0;
        m_bound = false;
    }
    if (!m_constructing) {   // the layout is fixed: a repeat gives each argument as sizing did
        if (m_tables.byReference[m_arg] != byRef)
            BindError(ArgName(m_arg) + " was " + (byRef ? "a constant" : "a variable") + " when the call was sized");
        return true;
    }
    m_tables.byReference[m_arg] = byRef;
    if (m_arg == m_decl->inputs) {
        m_firstOutputDim = m_dimSlot;
        m_firstOutputWord = m_words;
    }
    SetOffset(m_words);
    const VX_ProcArgSpec& spec = m_decl->args[m_arg];
    if (spec.dims == 0) {
        m_words += WordsFor(TypeSize(spec.type));
        m_argElements[static_cast<std::size_t>(m_arg)] = 1;
    } else {
        m_dimsLeft = spec.dims;
        m_product = 1;
    }
    return true;
}

void VX_ProcedureType::CloseArgument() {
    if (m_arg < 0 || m_arg >= TotalArgs() || m_argClosed) return;
    m_argClosed = true;
    if (m_dimsLeft > 0) {
        BindError(ArgName(m_arg) + ": " + std::to_string(m_dimsLeft) + " of its dimension sizes not given");
        m_dimsLeft = 0;
        return;
    }
    const int expected = m_argElements[static_cast<std::size_t>(m_arg)];
    if (m_tables.byReference[m_arg] && m_elementsGiven != expected)
        BindError(ArgName(m_arg) + ": " + std::to_string(m_elementsGiven) + " elements given, its dimension sizes make " +
                  std::to_string(expected));
}

void VX_ProcedureType::SetConstant(const ConstProcValue& value, bool numeric) {
    if (!SetArg(false)) return;
    const VX_ProcArgSpec& spec = m_decl->args[m_arg];
    if (OutputArgument()) BindError(ArgName(m_arg) + " is given a constant; outputs must be variables");
    else if (spec.dims != 0) BindError(ArgName(m_arg) + " is an array, given a constant");
    else if (numeric == (spec.type == VX_ARG_STRING)) BindError(ArgName(m_arg) + " is " + TypeName(spec.type) + ", given a constant of another type");
    else if (spec.type != VX_ARG_REAL && value.GetKind() == ConstProcValue::Real_)
        BindError(ArgName(m_arg) + " is an integer, given the real constant " + std::to_string(value.Real()));
    m_tables.constants[m_arg] = value;
    if (m_constructing) ++m_inputElements;
    else ++m_bindInputIndex;
}

void VX_ProcedureType::Argument(const char* constant) {
    ConstProcValue v;
    v.Set(constant);
    SetConstant(v, false);
}

void VX_ProcedureType::Argument(int constant) {
    ConstProcValue v;
    v.Set(constant);
    SetConstant(v, true);
}

void VX_ProcedureType::Argument(double constant) {
    ConstProcValue v;
    v.Set(constant);
    SetConstant(v, true);
}

void VX_ProcedureType::Argument(VX_StringSetIter& it) { Argument(it.String()); }
void VX_ProcedureType::Argument(VX_IntegerSetIter& it) { Argument(it.Integer()); }

void VX_ProcedureType::Argument(VX_VarParam& scalar) {
    if (!SetArg(true)) return;
    if (m_decl->args[m_arg].dims != 0) {
        BindError(ArgName(m_arg) + " is an array: open it with Argument() and give its sizes and elements");
        return;
    }
    Element(scalar);
}

void VX_ProcedureType::Argument() {
    if (!SetArg(true)) return;
    if (m_decl->args[m_arg].dims == 0) BindError(ArgName(m_arg) + " is a scalar, opened as an array");
}

void VX_ProcedureType::SetDimensionSize(int n) {
    if (!m_constructing) return;   // the sizes were fixed by the sizing pass
    if (m_arg < 0 || m_arg >= TotalArgs() || m_dimsLeft <= 0) {
        BindError("a dimension size given where no array argument expects one");
        return;
    }
    if (m_dimSlot >= m_decl->dims) {   // cannot happen with a consistent declaration
        BindError("more dimension sizes than the declaration's " + std::to_string(m_decl->dims));
        return;
    }
    if (n < 0 || static_cast<long long>(m_product) * n > kMaxElements) {
        BindError(ArgName(m_arg) + ": dimension size " + std::to_string(n) + " is out of range");
        n = 0;
    }
    m_tables.dimensionSizes[m_dimSlot++] = n;
    m_product *= n;
    if (--m_dimsLeft > 0) return;
    const int type = m_decl->args[m_arg].type;
    m_words += WordsFor(static_cast<long long>(m_product) * TypeSize(type));
    if (type == VX_ARG_STRING && m_cStrings) m_words += PointerTableWords(m_product);
    m_argElements[static_cast<std::size_t>(m_arg)] = m_product;
}

void VX_ProcedureType::Element(VX_VarParam& element) {
    if (m_arg < 0 || m_arg >= TotalArgs()) {
        BindError("an element given outside any argument");
        return;
    }
    if (!m_tables.byReference[m_arg]) {
        BindError(ArgName(m_arg) + " is a constant and takes no elements");
        return;
    }
    ++m_elementsGiven;
    if (!m_constructing) {
        BindElement(element, m_arg, OutputArgument() ? -1 : m_bindInputIndex++);
        return;
    }
    int inputIndex = -1;
    if (OutputArgument()) {
        ++m_outputElements;
    } else {
        inputIndex = m_inputElements++;
        ++m_referencedInputs;
        if (element.IsSolverVariable()) ++m_variableInputs;
    }
    if (!m_counting) m_pending.push_back(Pending{&element, m_arg, inputIndex});
}

void VX_ProcedureType::BindElement(VX_VarParam& element, int arg, int inputIndex) {
    const VX_ProcArgSpec& spec = m_decl->args[arg];
    const auto kind = element.GetKind();
    bool fits;
    if (arg >= m_decl->inputs) fits = kind == VX_VarParam::RealVariable;
    else if (spec.type == VX_ARG_REAL) fits = kind == VX_VarParam::RealVariable || kind == VX_VarParam::RealParameter ||
                                             kind == VX_VarParam::IntegerParameter;
    else if (spec.type == VX_ARG_STRING) fits = kind == VX_VarParam::StringParameter;
    else fits = kind == VX_VarParam::IntegerParameter || kind == VX_VarParam::LogicalParameter;
    if (!fits) {
        const std::string path = element.Path();
        BindError(ArgName(arg) + ": " + (path.empty() ? std::string("an element") : path) + " is " + element.KindName() +
                  (arg >= m_decl->inputs ? ", an output must be a real variable" : ", the declaration wants " + std::string(TypeName(spec.type))));
        return;
    }
    const bool solver = arg < m_decl->inputs && kind == VX_VarParam::RealVariable && element.IsSolverVariable();
    double* const* slot = kind == VX_VarParam::RealVariable ? static_cast<VX_Variable&>(element).ValueSlotAddress() : nullptr;
    m_elements.push_back(BoundElement{&element, slot, static_cast<std::uint8_t>(kind), solver});
    if (arg >= m_decl->inputs) {
        m_outputVars.push_back(static_cast<VX_Variable*>(&element));
    } else if (solver) {
        m_variableColumns.push_back(inputIndex);
        m_variableInputVars.push_back(static_cast<VX_Variable*>(&element));
    }
}

void VX_ProcedureType::BindPending() {
    m_elements.clear();
    m_outputVars.clear();
    m_variableColumns.clear();
    m_variableInputVars.clear();
    for (const Pending& p : m_pending) BindElement(*p.element, p.arg, p.inputIndex);
    std::vector<Pending>().swap(m_pending);
    FinishBinding();
}

void VX_ProcedureType::FinishBinding() {
    const std::size_t expected = static_cast<std::size_t>(m_referencedInputs + m_outputElements);
    if (m_bindError.empty() && m_elements.size() != expected)
        BindError("binding named " + std::to_string(m_elements.size()) + " element references, sizing named " +
                  std::to_string(expected));
    if (m_bindError.empty() && static_cast<int>(m_variableColumns.size()) != m_variableInputs)
        BindError("binding found " + std::to_string(m_variableColumns.size()) + " input elements that are solver variables, sizing " +
                  std::to_string(m_variableInputs));
    m_bound = m_bindError.empty();
    m_variableColumnsContiguous = true;   // every input element a solver variable: no gather needed
    for (std::size_t j = 0; j < m_variableColumns.size(); ++j) m_variableColumnsContiguous &= m_variableColumns[j] == static_cast<int>(j);
    if (m_wantDerivatives) m_residualDerivatives.assign(m_outputVars.size() * m_variableColumns.size(), 0.0);
    m_listHandle = ComponentListHandle();
}

void VX_ProcedureType::LastArgument() {
    CloseArgument();
    if (m_arg != TotalArgs() - 1)
        BindError(std::to_string(std::max(m_arg + 1, 0)) + " of its " + std::to_string(TotalArgs()) + " arguments given");
    if (m_constructing) {
        if (m_arg < m_decl->inputs) {   // no output given: they would start here
            m_firstOutputDim = m_dimSlot;
            m_firstOutputWord = m_words;
        }
        CreateDerivatives();
        FinalizeConstruction(m_firstOutputWord, m_words);
        m_constructing = false;
        if (!m_counting) BindPending();
    } else {
        FinishBinding();
    }
    m_arg = -1;
    m_argClosed = true;
}

void VX_ProcedureType::FinalizeConstruction(int firstOutputWord, int totalWords) {
    m_firstOutputWord = firstOutputWord;
    m_words = totalWords;
    if (m_counting) return;   // a counting instance is never called
    m_buffer = std::make_unique<double[]>(static_cast<std::size_t>(std::max(totalWords, 1)));
    m_rawDerivatives.assign(static_cast<std::size_t>(m_outputElements) * static_cast<std::size_t>(m_inputElements), 0.0);
    m_work.assign(static_cast<std::size_t>(std::max(m_inputElements + m_outputElements, 1)), 0.0);
    m_elements.reserve(static_cast<std::size_t>(m_referencedInputs + m_outputElements));
    m_outputVars.reserve(static_cast<std::size_t>(m_outputElements));
    InitializeCStrings();
}

void VX_ProcedureType::HandleDerivatives(bool negate) {
    if (!negate) {
        m_wantDerivatives = true;   // storage is made with the buffers
        return;
    }
    const std::size_t nIn = static_cast<std::size_t>(m_inputElements), nv = m_variableColumns.size();
    const double* raw = m_rawDerivatives.data();
    const int* column = m_variableColumns.data();
    double* out = m_residualDerivatives.data();
    bool bad = false;   // an infinite or NaN derivative: d - d is NaN just for those
    for (std::size_t o = 0; o < m_outputVars.size(); ++o, raw += nIn, out += nv) {
        if (m_variableColumnsContiguous) {
            for (std::size_t j = 0; j < nv; ++j) {
                const double d = raw[j];
                bad |= d - d != 0.0;
                out[j] = -d;
            }
        } else {
            for (std::size_t j = 0; j < nv; ++j) {
                const double d = raw[column[j]];
                bad |= d - d != 0.0;
                out[j] = -d;
            }
        }
    }
    if (bad) m_derivativesFinite = false;
}

void VX_ProcedureType::InitializeCStrings() {
    if (!m_cStrings || !m_buffer) return;
    for (int arg = 0; arg < m_decl->inputs; ++arg) {
        if (m_decl->args[arg].type != VX_ARG_STRING || m_decl->args[arg].dims == 0) continue;
        const int n = m_argElements[static_cast<std::size_t>(arg)];
        char* table = reinterpret_cast<char*>(m_buffer.get() + GetOffset(arg));
        char* strings = reinterpret_cast<char*>(m_buffer.get() + GetOffset(arg) + PointerTableWords(n));
        for (int i = 0; i < n; ++i) {
            char* address = strings + static_cast<std::ptrdiff_t>(i) * VX_PROC_STRING_LENGTH;
            std::memcpy(table + static_cast<std::size_t>(i) * sizeof(char*), &address, sizeof(char*));
        }
    }
}

int VX_ProcedureType::ComponentListHandle() const {
    if (!m_list) return 0;
    const VX_ComponentListData* list = m_list->List();
    const auto& all = VX_Session::Current().ComponentLists();
    if (!list || all.empty() || list < &all.front() || list > &all.back()) return 0;
    return static_cast<int>(list - &all.front()) + 1;
}

int VX_ProcedureType::NZAndEqnContribution(VX_ModelType* model, int group, int& eqns) {
    CloseArgument();
    if (m_constructing && m_arg != TotalArgs() - 1)
        BindError(std::to_string(std::max(m_arg + 1, 0)) + " of its " + std::to_string(TotalArgs()) + " arguments given");
    if (!m_bindError.empty()) return Fail(VX_E_PROCEDURE_BINDING, m_bindError);
    if (!model) return Fail(VX_E_POINTER, "no model to count the equations in");
    const int nonzeros = m_outputElements * (m_variableInputs + 1);
    model->AddToGroup(group, m_outputElements, nonzeros);
    eqns += m_outputElements;
    return nonzeros;
}

int VX_ProcedureType::CreateEquationsAndSetGroup(VX_ModelType* model, int group, const char* equationName) {
    if (!model) return Fail(VX_E_POINTER, "no model to hand the procedure to");
    if (m_owner) return Fail(VX_E_PROCEDURE_BINDING, "its equations were already made; a model binds each call once");
    m_equationName = equationName ? equationName : "";
    if (m_constructing || m_arg != -1) LastArgument();
    m_equations->clear();
    m_equations->reserve(static_cast<std::size_t>(m_outputElements));
    int number = 0;
    for (int a = 1; a <= m_decl->outputs; ++a) {
        const int arg = m_decl->inputs + a - 1;
        const bool scalar = m_decl->args[arg].dims == 0;
        const int n = m_argElements[static_cast<std::size_t>(arg)];
        for (int e = 1; e <= n; ++e) {
            const std::string label = scalar ? "[" + std::to_string(a) + "]" : "[" + std::to_string(a) + "_" + std::to_string(e) + "]";
            m_equations->emplace_back(this, ++number, group, model, label);
        }
    }
    model->AddProcCall(this, group);
    m_owner = model;
    if (!m_bound) return Fail(VX_E_PROCEDURE_BINDING, m_bindError.empty() ? "not bound" : m_bindError);
    return VX_S_OK;
}

// ---------------------------------------------------------------- evaluation

int VX_ProcedureType::JacPattern(VX_ModelType* model, int*& rows, int*& cols, VX_EquationType** types) {
    if (!m_bound || !model) return 0;
    VX_Session& session = VX_Session::Current();
    int entries = 0;
    for (std::size_t o = 0; o < m_outputVars.size(); ++o) {
        VX_ProcedureEquationType& eq = (*m_equations)[o];
        const int row = model->AddEquation(&eq, eq.Label(), types);
        *rows++ = row;
        *cols++ = session.ColumnOf(*m_outputVars[o]);
        for (VX_Variable* v : m_variableInputVars) {
            *rows++ = row;
            *cols++ = session.ColumnOf(*v);
        }
        entries += 1 + static_cast<int>(m_variableInputVars.size());
    }
    return entries;
}

int VX_ProcedureType::Residuals(double* r, int& k) {
    if (m_outputElements == 0) return VX_S_OK;
    const int status = CallFn(VX_CALL_VALUES, true);
    if (status < 0) {
        k += m_outputElements;
        return status;
    }
    const double* computed = m_buffer.get() + m_firstOutputWord;
    int at = k;
    for (std::size_t j = 0; j < m_outputVars.size(); ++j) r[at++] = m_outputVars[j]->fv() - computed[j];
    k = at;
    return VX_S_OK;
}

int VX_ProcedureType::Jacobian(double* J, int& k) {
    if (m_outputElements == 0) return VX_S_OK;
    const int status = CallFn(VX_CALL_JACOBIAN, true);
    if (status >= 0 && !m_returnsDerivatives) return FiniteDifferenceJacobian(J, k);
    const std::size_t nv = m_variableColumns.size();
    const double* d = m_residualDerivatives.empty() ? nullptr : m_residualDerivatives.data();
    int at = k;
    for (int o = 0; o < m_outputElements; ++o) {
        J[at++] = 1.0;
        if (d) {
            std::memcpy(J + at, d + static_cast<std::size_t>(o) * nv, nv * sizeof(double));
        } else {
            std::fill(J + at, J + at + static_cast<std::ptrdiff_t>(nv), 0.0);
        }
        at += static_cast<int>(nv);
    }
    k = at;
    return status < 0 ? status : VX_S_OK;
}

int VX_ProcedureType::FiniteDifferenceJacobian(double* J, int& k) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    const std::size_t nOut = m_outputVars.size(), nv = m_variableInputVars.size(), width = 1 + nv;
    const double* computed = m_buffer.get() + m_firstOutputWord;
    if (m_savedOutputs.empty()) m_savedOutputs.resize(nOut);
    std::copy(computed, computed + nOut, m_savedOutputs.begin());
    int result = VX_S_OK;
    std::string firstFailure;
    for (std::size_t j = 0; j < nv; ++j) {
        VX_Variable& var = *m_variableInputVars[j];
        const double x = var.fv(), lo = var.Lower(), hi = var.Upper();
        double h = std::fabs(x) > 1.0 ? std::fabs(x) * 1e-6 : 1e-6;
        double moved;
        if (lo <= x + h && x + h <= hi) {
            moved = x + h;
        } else if (h = -h; lo <= x + h && x + h <= hi) {
            moved = x + h;
        } else if (x - lo > hi - x) {
            // Towards the lower bound; h stays positive although the value moved down.
            moved = lo;
            h = x - lo;
        } else {
            moved = hi;
            h = hi - x;
        }
        if (h == 0.0) {   // both bounds at the value: the element cannot move, its column is 0
            for (std::size_t o = 0; o < nOut; ++o) J[k + static_cast<int>(o * width + 1 + j)] = 0.0;
            continue;
        }
        var.SetSolverValue(moved);
        const int status = CallFn(VX_CALL_VALUES, true);
        var.SetSolverValue(x);
        if (status < 0) {
            if (result >= 0) {
                result = status;
                firstFailure = m_failure;
            }
            continue;
        }
        for (std::size_t o = 0; o < nOut; ++o) {
            const double d = computed[o] - m_savedOutputs[o];
            double entry = -d / h;
            if (std::fabs(h) <= 1.0 && std::fabs(d) > std::fabs(h) * kLargest)
                entry = (h > 0) == (d > 0) ? -kLargest : kLargest;
            J[k + static_cast<int>(o * width + 1 + j)] = entry;
        }
    }
    for (std::size_t o = 0; o < nOut; ++o) J[k + static_cast<int>(o * width)] = 1.0;
    k += static_cast<int>(nOut * width);
    RestoreAfterPerturbation();
    if (result < 0) Fail(result, firstFailure, false);
    return result;
}

// The buffer goes back to the unperturbed inputs and their outputs, so that the next residual
// pass at the same point makes no call.
void VX_ProcedureType::RestoreAfterPerturbation() {
    PackInputVars();
    std::copy(m_savedOutputs.begin(), m_savedOutputs.end(), m_buffer.get() + m_firstOutputWord);
    m_changed = false;
    m_lastCall = VX_CALL_VALUES;
}

int VX_ProcedureType::CallFn(int ct, bool checkOutputs) {
    if (!m_bound) return Fail(VX_E_PROCEDURE_BINDING, m_bindError.empty() ? "called before it was bound" : m_bindError);
    switch (ct) {
    case VX_CALL_PREPARE:
        if (LastCall(VX_CALL_PREPARE)) return VX_S_OK;
        std::fill(m_rawDerivatives.begin(), m_rawDerivatives.end(), 0.0);
        m_changed = true;
        break;
    case VX_CALL_INITIALISE:
        if (LastCall(VX_CALL_INITIALISE) || LastCall(-1)) return VX_S_OK;
        m_changed = true;
        break;
    case VX_CALL_VALUES:
    case VX_CALL_JACOBIAN:
        ct = m_returnsDerivatives ? VX_CALL_DERIVATIVES : VX_CALL_VALUES;
        [[fallthrough]];
    case VX_CALL_DERIVATIVES:
        m_changed = !LastCall(ct) || m_alwaysCall || m_inputElements == 0;
        break;
    default:
        return Fail(VX_E_INVALIDARG, "call type " + std::to_string(ct) + " does not exist");
    }
    PackInputVars();
    if (!m_changed) return VX_S_OK;
    if (PresetOutputs()) PackOutputVars();
    int status = 1;
    if (const int loaded = EnsureCompatibleDLLLoaded(m_decl->version); loaded < 0) {
        m_lastCall = -1;
        return loaded;
    }
    if (m_list) m_list->BeginPropertiesCall();
    CallRoutine(ct, status);
    if (m_list) m_list->EndPropertiesCall();
    const int result = CheckIFailAndOutputs(status, ct, checkOutputs);
    if (result < 0) return result;
    if ((ct == VX_CALL_VALUES || ct == VX_CALL_DERIVATIVES) && m_postsetInputs) UnpackInputVars();
    if (ct == VX_CALL_DERIVATIVES) {
        m_derivativesFinite = true;
        NegateDerivatives();
        if (checkOutputs && !m_derivativesFinite) return RefuseDerivatives();
    }
    return result;
}

int VX_ProcedureType::RefuseDerivatives() {
    m_lastCall = -1;
    std::fill(m_residualDerivatives.begin(), m_residualDerivatives.end(), 0.0);
    const std::size_t nIn = static_cast<std::size_t>(m_inputElements);
    for (std::size_t o = 0; o < m_outputVars.size(); ++o)
        for (int i : m_variableColumns) {
            const double d = m_rawDerivatives[o * nIn + static_cast<std::size_t>(i)];
            if (!std::isfinite(d))
                return Fail(VX_E_ROUTINE_NONFINITE, "the routine returned the derivative " + std::to_string(d) + " of output element " +
                                                        std::to_string(o + 1) + " with respect to input element " + std::to_string(i + 1));
        }
    return Fail(VX_E_ROUTINE_NONFINITE, "the routine returned a non-finite derivative");
}

void VX_ProcedureType::CallRoutine(int ct, int& status) {
    int callType = ct;
    int workLength = static_cast<int>(m_work.size());
    int outputs = m_outputElements, inputs = m_inputElements;
    double* buffer = m_buffer.get();
    int* dims = m_tables.dimensionSizes;
    int* offsets = m_tables.offsets;
    m_runtimeInteger = m_listHandle;   // the routine may have changed the cell it was given
    InitializeCStrings();
    if (m_decl->version == ZOREXP_ROUTINE_INTERFACE_SPARSE) {
        if (m_sparseRows.empty() && !m_rawDerivatives.empty()) {
            m_sparseRows.reserve(m_rawDerivatives.size());
            m_sparseColumns.reserve(m_rawDerivatives.size());
            for (int o = 0; o < outputs; ++o)
                for (int i = 0; i < inputs; ++i) {
                    m_sparseRows.push_back(o + 1);
                    m_sparseColumns.push_back(i + 1);
                }
        }
        int entries = static_cast<int>(m_rawDerivatives.size());
        int own = 0;
        reinterpret_cast<zorexp_sparse_routine*>(m_dll.entry)(
            &callType, buffer, dims, buffer, dims + m_firstOutputDim, offsets, offsets + m_decl->inputs, &m_runtimeInteger,
            m_work.data(), &workLength, &entries, m_sparseRows.data(), m_sparseColumns.data(), &own, m_rawDerivatives.data(),
            &status);
    } else {
        reinterpret_cast<zorexp_dense_routine*>(m_dll.entry)(
            buffer, dims, buffer, dims + m_firstOutputDim, offsets, offsets + m_decl->inputs, &status, &m_runtimeInteger,
            m_work.data(), &workLength, m_rawDerivatives.data(), &outputs, &inputs, &callType);
    }
}

// Outputs are checked here; derivatives where they are turned into residual derivatives (see
// HandleDerivatives and CallFn), which reads each of them once.
int VX_ProcedureType::CheckIFailAndOutputs(int status, int ct, bool checkOutputs) {
    if (status <= 0) {
        m_lastCall = -1;
        std::string why = "the routine failed with status " + std::to_string(status);
        if (VX_RoutineErrorPending()) why += ": " + VX_TakeRoutineError();
        return Fail(status == ZOREXP_STATUS_BAD_INPUT ? VX_E_ROUTINE_BAD_INPUT : VX_E_ROUTINE_FAILED, why);
    }
    if (VX_RoutineErrorPending()) VX_TakeRoutineError();   // said, then succeeded after all
    if (checkOutputs) {
        const double* computed = m_buffer.get() + m_firstOutputWord;
        for (int j = 0; j < m_outputElements; ++j)
            if (!std::isfinite(computed[j])) {
                m_lastCall = -1;
                return Fail(VX_E_ROUTINE_NONFINITE, "the routine returned " + std::to_string(computed[j]) + " for output element " +
                                                        std::to_string(j + 1) + " (equation " + (*m_equations)[static_cast<std::size_t>(j)].Label() + ")");
            }
    }
    m_lastCall = ct;
    return VX_S_OK;
}

// ---------------------------------------------------------------- packing

void VX_ProcedureType::PackInputVars() {
    m_cursor = 0;
    for (int arg = 0; arg < m_decl->inputs; ++arg) {
        const bool byRef = m_tables.byReference[arg];
        switch (m_decl->args[arg].type) {
        case VX_ARG_REAL:
            if (byRef) PackVarReal(arg);
            else PackVal(arg, GetRealArg(arg));
            break;
        case VX_ARG_STRING:
            if (byRef) PackVarString(arg);
            else PackVal(arg, GetStringArg(arg));
            break;
        default:
            if (byRef) PackVarInteger(arg);
            else PackVal(arg, GetIntegerArg(arg));
            break;
        }
    }
}

void VX_ProcedureType::PackInteger(unsigned char* slot, int value) {
    int present;
    std::memcpy(&present, slot, sizeof present);
    if (present == value) return;
    std::memcpy(slot, &value, sizeof value);
    m_changed = true;
}

void VX_ProcedureType::PackVal(int arg, int value) {
    PackInteger(reinterpret_cast<unsigned char*>(m_buffer.get() + GetOffset(arg)), value);
}

void VX_ProcedureType::PackVal(int arg, double value) {
    double& slot = m_buffer[static_cast<std::size_t>(GetOffset(arg))];
    if (slot == value) return;   // unequal or unordered (a NaN) is a change
    slot = value;
    m_changed = true;
}

void VX_ProcedureType::PackVal(int arg, const char* value) {
    PackStr(reinterpret_cast<char*>(m_buffer.get() + GetOffset(arg)), value);
}

void VX_ProcedureType::PackStr(char* field, const char* text) {
    char packed[VX_PROC_STRING_LENGTH];
    const std::size_t room = m_cStrings ? VX_PROC_STRING_LENGTH - 1 : VX_PROC_STRING_LENGTH;
    const std::size_t n = text ? strnlen(text, room) : 0;
    std::memcpy(packed, text, n);
    std::memset(packed + n, m_cStrings ? '\0' : ' ', VX_PROC_STRING_LENGTH - n);
    if (std::memcmp(field, packed, VX_PROC_STRING_LENGTH) == 0) return;
    std::memcpy(field, packed, VX_PROC_STRING_LENGTH);
    m_changed = true;
}

void VX_ProcedureType::PackVarInteger(int arg) {
    if (m_decl->args[arg].dims == 0) PackVal(arg, ElementInteger(m_elements[m_cursor++]));
    else PackIntegerArray(GetOffset(arg), m_argElements[static_cast<std::size_t>(arg)]);
}

void VX_ProcedureType::PackVarReal(int arg) {
    if (m_decl->args[arg].dims == 0) PackVal(arg, ElementReal(m_elements[m_cursor++]));
    else PackRealArray(GetOffset(arg), m_argElements[static_cast<std::size_t>(arg)]);
}

void VX_ProcedureType::PackVarString(int arg) {
    if (m_decl->args[arg].dims == 0) PackVal(arg, ElementString(m_elements[m_cursor++]));
    else PackStringArray(GetOffset(arg), m_argElements[static_cast<std::size_t>(arg)]);
}

void VX_ProcedureType::PackIntegerArray(int word, int elements) {
    unsigned char* slot = reinterpret_cast<unsigned char*>(m_buffer.get() + word);
    for (int i = 0; i < elements; ++i, slot += sizeof(int)) PackInteger(slot, ElementInteger(m_elements[m_cursor++]));
}

void VX_ProcedureType::PackRealArray(int word, int elements) {
    double* slot = m_buffer.get() + word;
    const BoundElement* e = m_elements.data() + m_cursor;
    bool changed = false;
    for (int i = 0; i < elements; ++i) {
        const double value = e[i].slot ? **e[i].slot : ElementReal(e[i]);
        changed |= !(slot[i] == value);   // unequal or unordered (a NaN)
        slot[i] = value;
    }
    m_cursor += static_cast<std::size_t>(elements);
    m_changed = m_changed || changed;
}

void VX_ProcedureType::PackStringArray(int word, int elements) {
    char* field = reinterpret_cast<char*>(m_buffer.get() + word + (m_cStrings ? PointerTableWords(elements) : 0));
    for (int i = 0; i < elements; ++i, field += VX_PROC_STRING_LENGTH) PackStr(field, ElementString(m_elements[m_cursor++]));
}

void VX_ProcedureType::PackOutputVars() {
    double* slot = m_buffer.get() + m_firstOutputWord;
    for (std::size_t j = 0; j < m_outputVars.size(); ++j) slot[j] = m_outputVars[j]->fv();
}

namespace {

// A string field as text: trailing blanks and NULs trimmed.
std::string FieldText(const char* field) {
    std::size_t n = VX_PROC_STRING_LENGTH;
    if (const void* nul = std::memchr(field, '\0', n)) n = static_cast<std::size_t>(static_cast<const char*>(nul) - field);
    while (n > 0 && field[n - 1] == ' ') --n;
    return std::string(field, n);
}

}  // namespace

void VX_ProcedureType::WriteBack(VX_VarParam& element, const VX_Value& value) {
    const VX_VarParamProp prop = element.VALUE();
    if (prop.IsDefaultAssignment()) prop.Assign(&value);
    else prop.SetCurrentValue(&value);
    if (m_update) m_update->InputWrittenBack(element);
}

void VX_ProcedureType::UnpackInputVars() {
    std::size_t cursor = 0;
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(m_buffer.get());
    for (int arg = 0; arg < m_decl->inputs; ++arg) {
        if (!m_tables.byReference[arg]) continue;
        const VX_ProcArgSpec& spec = m_decl->args[arg];
        const int n = m_argElements[static_cast<std::size_t>(arg)];
        if (!spec.writtenBack) {
            cursor += static_cast<std::size_t>(n);
            continue;
        }
        const std::size_t first = static_cast<std::size_t>(GetOffset(arg)) * 8;
        for (int i = 0; i < n; ++i) {
            const BoundElement& e = m_elements[cursor++];
            if (spec.type == VX_ARG_STRING) {
                const std::size_t table = m_cStrings && spec.dims != 0 ? static_cast<std::size_t>(PointerTableWords(n)) * 8 : 0;
                const std::string text = FieldText(reinterpret_cast<const char*>(bytes + first + table) + i * VX_PROC_STRING_LENGTH);
                if (text != ElementString(e)) WriteBack(*e.object, VX_Value(text.c_str(), 0));
                continue;
            }
            if (!e.solverVariable) continue;
            double left;
            if (spec.type == VX_ARG_REAL) {
                std::memcpy(&left, bytes + first + static_cast<std::size_t>(i) * 8, sizeof left);
            } else {
                int value;
                std::memcpy(&value, bytes + first + static_cast<std::size_t>(i) * 4, sizeof value);
                left = value;
            }
            if (left != ElementReal(e)) WriteBack(*e.object, VX_Value(left, 0));
        }
    }
}

// ---------------------------------------------------------------- loading and failures

int VX_ProcedureType::EnsureCompatibleDLLLoaded(int version) {
    if (m_dll.entry) return VX_S_OK;
    return version == ZOREXP_ROUTINE_INTERFACE_SPARSE ? GetProcedure13Address(&m_dll) : GetProcedureAddress(&m_dll);
}

int VX_ProcedureType::GetProcedureAddress(DLLFunction* f) {
    if (!f) return VX_E_POINTER;
    const VX_RoutineLookup found = VX_FindRoutine(DLLName(), m_decl->version, ProcedureName());
    if (found.status < 0) return Fail(found.status, found.why);
    f->library = found.library;
    f->entry = found.entry;
    return VX_S_OK;
}

int VX_ProcedureType::GetProcedure13Address(DLLFunction* f) { return GetProcedureAddress(f); }

VX_VarParam* VX_ProcedureType::OutputVar(int element) const {
    return element >= 0 && static_cast<std::size_t>(element) < m_outputVars.size() ? m_outputVars[static_cast<std::size_t>(element)] : nullptr;
}

std::string VX_ProcedureType::Describe() const {
    std::string text = std::string("procedure ") + m_decl->name;
    if (!m_equationName.empty()) text += " in equation " + m_equationName;
    return text + " (library \"" + DLLName() + "\", entry point \"" + ProcedureName() + "\")";
}

int VX_ProcedureType::Fail(int code, const std::string& what, bool describe) noexcept {
    // A failure on the evaluation path must not throw: without memory the text is lost, the
    // status is not.
    try {
        m_failure = describe ? Describe() + ": " + what : what;
        VX_Session::Current().ReportFailure(code, m_owner, "procedure call", m_failure);
    } catch (...) {
    }
    return code;
}
