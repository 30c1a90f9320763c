#pragma once
// VX_Session: the state the runtime keeps for one flowsheet: solver numbering of rows and
// columns, the global parameters shared by all blocks, and the named component lists.
// One session is current at a time; VX_Session::Current() always yields one.
#include <cstddef>
#include <limits>
#include <deque>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "zorexp/text.hpp"
#include "zorexp/value.hpp"

class VX_Type;
class VX_VarParam;
class VX_Variable;

// Why an operation of a model failed: its status, the object and operation, and the message.
// Models return a negative status; the message stays here for the host to show.
struct VX_Failure {
    std::int32_t status = 0;
    const VX_Type* object = nullptr;   // valid while the object lives
    std::string operation;             // "SetUpEquations", "Residuals", ...
    std::string message;
};

// A model assignment the runtime refused (the property kept its value).
struct VX_Refusal {
    const VX_VarParam* object = nullptr;
    std::string path;                  // of the property within its top object
    std::string attribute;             // "VALUE", "SPEC", ...
    std::string value;
    std::string reason;
    int ordinal = 0;                   // of the assignment statement
};

struct VX_ComponentListData {
    std::string name;
    std::shared_ptr<const VX_StrSetData> components;
    std::map<std::string, SUValue> options;   // list options such as "KBASE" (keys upper case)
};

// An array would grow beyond the session's limit of array elements: refused before anything
// is allocated. The message names the array and the sizes.
class VX_SizeLimitError : public std::length_error {
public:
    VX_SizeLimitError(const std::string& message, std::size_t requested, std::size_t limit)
        : std::length_error(message), m_requested(requested), m_limit(limit) {}
    std::size_t Requested() const { return m_requested; }
    std::size_t Limit() const { return m_limit; }

private:
    std::size_t m_requested;
    std::size_t m_limit;
};

class VX_Session {
public:
    VX_Session();
    ~VX_Session();
    VX_Session(const VX_Session&) = delete;
    VX_Session& operator=(const VX_Session&) = delete;

    static VX_Session& Current();
    // Makes s current (null: back to the built-in session). Returns the previous one.
    static VX_Session* MakeCurrent(VX_Session* s);

    // --- numbering for a pattern pass
    // Forgets row and column numbers and resets the group counter.
    void ResetNumbering();
    int NextRow() { return m_rows++; }
    // Starts numbering rows from 0 again (a new pattern pass over the same equations).
    void RestartRows() { m_rows = 0; m_tape.clear(); }
    int RowCount() const { return m_rows; }
    // Numbers a real variable or real parameter on first use; -1 for other properties.
    int ColumnOf(VX_VarParam& v);
    const std::vector<VX_VarParam*>& Columns() const { return m_columns; }
    void ForgetColumn(VX_VarParam& v);   // a numbered property is being destroyed

    // --- equation labels: kept by the session, so models may pass any text
    const char* InternLabel(const char* label);

    // --- failures of models (the status channel's text) and refused assignments
    void ReportFailure(std::int32_t status, const VX_Type* object, std::string operation, std::string message);
    const VX_Failure& LastFailure() const { return m_failure; }
    void ClearFailure() { m_failure = VX_Failure{}; }
    void NoteRefusal(const VX_VarParam& object, const char* attribute, const VX_Value& value, const std::string& reason);
    const std::vector<VX_Refusal>& Refusals() const { return m_refusals; }
    void ForgetRefusals(const VX_VarParam& object);

    // --- globals: one object per name (case-insensitive), of the type the first declaration
    // gives it. A later declaration of another type gets null and the reason in *why.
    template <class T>
    T* Global(const char* name, std::string* why = nullptr) {
        std::string key = Key(name);
        auto it = m_globals.find(key);
        if (it == m_globals.end()) {
            it = m_globals.emplace(key, Owned{new T(true), [](VX_Type* p) { delete static_cast<T*>(p); }, &typeid(T)}).first;
            Name(*it->second.object, key);
        }
        if (*it->second.type != typeid(T)) {
            if (why) *why = GlobalTypeClash(key, *it->second.object, typeid(T));
            return nullptr;
        }
        return static_cast<T*>(it->second.object);
    }
    VX_Type* FindGlobal(const char* name) const;
    std::vector<std::pair<std::string, VX_Type*>> Globals() const;

    // --- component lists; the first defined is the default
    void DefineComponentList(const std::string& name, std::vector<std::string> components,
                             std::map<std::string, SUValue> options = {});
    const VX_ComponentListData* FindComponentList(const std::string& name) const;
    const VX_ComponentListData* DefaultComponentList() const;
    // All lists in definition order; a list keeps its position when it is redefined.
    const std::vector<VX_ComponentListData>& ComponentLists() const { return m_lists; }

    // --- notes that routines leave for the log (a note already kept is not kept twice)
    void AddNote(std::string text);
    const std::vector<std::string>& Notes() const { return m_notes; }

    // --- a guard on size: how many array elements the session may hold in all. Arrays count
    // their elements here before they grow, so that an absurd size (say, a set of two
    // billion members) is refused instead of exhausting memory. Unlimited unless the host
    // sets a limit.
    static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();
    // The limit of sessions made from now on, and of the built-in session.
    static void SetDefaultElementLimit(std::size_t limit);
    void SetElementLimit(std::size_t limit) { m_elementLimit = limit; }
    std::size_t ElementLimit() const { return m_elementLimit; }
    std::size_t Elements() const { return m_elements; }
    // An array goes from `from` to `to` elements. Throws VX_SizeLimitError, counting nothing,
    // when it grows and the session would then hold more than its limit.
    void CountElements(std::size_t from, std::size_t to, const VX_Type& array);

    // --- dependency recording of v(): counts reads while a recorder is active
    void BeginRecording() { m_recording = true; m_reads = 0; }
    long EndRecording() { m_recording = false; return m_reads; }
    void NoteRead() { if (m_recording) ++m_reads; }

    // --- expression tape, kept only when enabled (it costs memory per equation)
    void SetRecordExpressions(bool on) { m_recordExpressions = on; }
    bool RecordExpressions() const { return m_recordExpressions; }
    struct ExprItem { int eqn; int op; };   // op < 0: a term
    void Record(int eqn, int op) { if (m_recordExpressions) m_tape.push_back({eqn, op}); }
    const std::vector<ExprItem>& Tape() const { return m_tape; }

private:
    static VX_Session& BuiltIn();

    struct Owned {
        VX_Type* object;
        void (*destroy)(VX_Type*);
        const std::type_info* type;
    };
    static std::string Key(const char* name);
    // Gives a global its path: its name, as a property of the session's own holder.
    void Name(VX_Type& global, const std::string& name);
    static std::string GlobalTypeClash(const std::string& name, const VX_Type& existing, const std::type_info& wanted);

    int m_rows = 0;
    std::vector<VX_VarParam*> m_columns;
    std::unordered_set<std::string> m_labels;
    VX_Failure m_failure;
    std::vector<VX_Refusal> m_refusals;
    std::unordered_map<std::string, Owned> m_globals;
    std::unique_ptr<VX_Type> m_globalHolder;   // the container the globals are properties of
    std::vector<VX_ComponentListData> m_lists;
    bool m_recording = false;
    long m_reads = 0;
    bool m_recordExpressions = false;
    std::vector<ExprItem> m_tape;
    std::size_t m_elementLimit;
    std::size_t m_elements = 0;
    std::vector<std::string> m_notes;
};
