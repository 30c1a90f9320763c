#pragma once
// VX_ProtocolDriver: drives blocks through the container protocol together with everything they
// contain. A block's sub-models, ports (also those of its multiports), structures and arrays of
// them are units of their own; connections and global structures are units too. The driver
// runs each protocol operation on every unit, parents before their members, and lays the units'
// equations out one after the other: each unit's rows and Jacobian entries form one contiguous
// block of the flowsheet's arrays.
//
// Failures: every operation answers a status. A negative status from a unit, an exception out
// of its code, or answers that disagree with each other (say, JacPattern writing fewer entries
// than SetUpEquations declared) stop the operation; LastFailure() tells which unit, which
// operation and why. Residuals and Jacobian throw nothing and allocate nothing.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "zorexp/model_type.hpp"

class VX_Connection;
class VX_ExternalBase;

class VX_ProtocolDriver {
public:
    struct Unit {
        VX_ModelType* object = nullptr;
        int block = -1;        // the block it belongs to (index into Blocks()), -1 for units of their own
        int depth = 0;         // 0 for a block or a unit of its own, +1 per level of containment
        int parent = -1;       // the unit that contains it
        int firstRow = 0, rows = 0;
        int firstEntry = 0, entries = 0;
    };
    struct Failure {
        std::int32_t status = 0;
        int unit = -1;         // -1 when no unit is to blame
        std::string operation;
        std::string message;
    };

    // Blocks in the order their equations come; units of their own (connections, global
    // structures) after all blocks, in the order added. The driver owns nothing.
    int AddBlock(VX_ModelType& block);
    void AddUnit(VX_ModelType& unit);
    void AddConnection(VX_Connection& connection);
    const std::vector<VX_ModelType*>& Blocks() const { return m_blocks; }

    // (Re)collects the units: the blocks and, depth first in property order, what they contain.
    // Done by SetDims, since sizing may create or remove members.
    void Collect();
    const std::vector<Unit>& Units() const { return m_units; }
    // The unit an object is (or -1).
    int UnitOf(const VX_Type& object) const;

    // Binds every external reference of every unit that nothing is bound to yet: bind gets the
    // unit, the reference and its name, and returns the object (null: leave it unbound). An
    // object that does not fit the reference's type fails with VX_E_WRONGKIND, naming both.
    using ExternalBinder = std::function<VX_Type*(VX_ModelType& unit, VX_ExternalBase& reference, const char* name)>;
    std::int32_t LinkExternals(const ExternalBinder& bind);

    // Set-up, every unit: component lists flow from owners to members, arrays are sized,
    // connections matched, and assignments run (a member's a level lower per containment).
    std::int32_t SetDims();
    std::int32_t ExecuteAssignments(int level, int context);

    // Equations: numbers the rows and columns anew, groups after firstGroup; then the pattern,
    // into arrays of Entries().
    std::int32_t SetUpEquations(int firstGroup = 0);
    int Rows() const { return m_rows; }
    int Entries() const { return m_entries; }
    std::int32_t JacPattern(int* rows, int* cols, VX_EquationType** types = nullptr);

    // Evaluation of all groups (0) or one, into arrays of Rows() and Entries().
    std::int32_t Residuals(double* r, int group = 0) noexcept;
    std::int32_t Jacobian(double* values, int group = 0) noexcept;

    const Failure& LastFailure() const { return m_failure; }
    // The unit that holds a row (or -1), and the row's label.
    int UnitOfRow(int row) const;
    const char* RowLabel(int row) const;

private:
    template <class Op>
    std::int32_t Run(int unit, const char* operation, Op&& op) noexcept;
    std::int32_t Fail(int unit, std::int32_t status, const char* operation, std::string message) noexcept;
    void Walk(VX_Type& object, int block, int depth, int parent);
    void InheritComponentLists();

    std::vector<VX_ModelType*> m_blocks;
    std::vector<VX_ModelType*> m_own;
    std::vector<Unit> m_units;
    int m_rows = 0;
    int m_entries = 0;
    Failure m_failure;
};
