#pragma once
// A flowsheet set up from its file: one runtime session holding the component lists and the
// globals, and the blocks, each created through the block creator and brought through the
// set-up protocol with the file's values applied as user values.
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "flowsheet/flowsheet_document.hpp"
#include "zorexp/protocol_driver.hpp"

class VX_Connection;
class VX_Containable;
class VX_ModelType;
class VX_Session;
class VX_Type;

namespace zx::flowsheet {

// Makes a block of the named type holding one reference, or returns null and says why in
// error. The command passes one that calls the model library's factory exports; tests pass
// one that constructs classes directly.
using BlockCreator = std::function<VX_Type*(const std::string& typeName, std::string& error)>;

// A creator over a model library's factory exports: find returns the factory of a type name
// ("<name>Factory") or null when the library has none.
using FactoryFunction = VX_Containable* (*)();
BlockCreator CreatorFromFactories(std::function<FactoryFunction(const std::string& typeName)> find);

struct Block {
    std::string name;
    std::string type;
    VX_ModelType* model = nullptr;   // one reference, released by the flowsheet
};

class Flowsheet {
public:
    // Creates a session (current while the flowsheet lives), the component lists and the
    // blocks; joins the connections, binds external references to parameters to the globals
    // of their names; applies the globals and the blocks' values in rounds of SetDims and
    // ExecuteAssignments until no array changes size and every value has found its property.
    // Throws InputError for anything in the file that cannot be applied, ModelFailure when a
    // block fails an operation.
    static std::unique_ptr<Flowsheet> Build(const FlowsheetDocument& doc, const BlockCreator& create);
    ~Flowsheet();
    Flowsheet(const Flowsheet&) = delete;
    Flowsheet& operator=(const Flowsheet&) = delete;

    const std::vector<Block>& Blocks() const { return m_blocks; }
    VX_Session& Session() { return *m_session; }
    // The driver that runs the protocol over the blocks, what they contain, and the connections.
    VX_ProtocolDriver& Driver() { return m_driver; }
    const VX_ProtocolDriver& Driver() const { return m_driver; }
    // Rounds of SetDims and ExecuteAssignments set-up took.
    int SetUpRounds() const { return m_rounds; }

    // The block an object belongs to (-1 if none) and its name for users: "R1.T_CELL(3)".
    int BlockOf(const VX_Type& object) const;
    std::string NameOf(const VX_Type& object) const;
    // An object for messages: "block R1 (RPLUG_TCOOL)", "block M1 (INLETMIXERFWD), IN_F(F1)
    // (MATERIALPORTRP)", "the connection H1.OUT_HS -> H2.IN_HS".
    std::string Describe(const VX_Type& object) const;

private:
    Flowsheet();
    void CreateBlocks(const FlowsheetDocument& doc, const BlockCreator& create);
    void ApplyGlobals(const FlowsheetDocument& doc);
    void Connect(const FlowsheetDocument& doc);
    void LinkGlobals(const FlowsheetDocument& doc);
    void SetUp(const FlowsheetDocument& doc);

    std::unique_ptr<VX_Session> m_session;
    VX_Session* m_previous = nullptr;
    std::vector<Block> m_blocks;
    std::vector<std::unique_ptr<VX_Connection>> m_connections;
    VX_ProtocolDriver m_driver;
    std::unordered_map<const VX_Type*, int> m_blockOfTop;
    std::unordered_map<std::string, int> m_blockByName;   // lower-case name -> block
    int m_rounds = 0;
};

}  // namespace zx::flowsheet
