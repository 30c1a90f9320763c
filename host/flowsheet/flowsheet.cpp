#include "flowsheet/flowsheet.hpp"

#include <algorithm>
#include <cctype>
#include <list>
#include <map>
#include <utility>

#include "paths/property_paths.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/set_application.hpp"
#include "flowsheet/variable_walk.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

// Level handed to the blocks' ExecuteAssignments; each base class runs one level lower.
constexpr int kAssignmentLevel = 0;
// Set-up rounds before giving up on a flowsheet whose arrays keep changing size.
constexpr int kMaxRounds = 50;

struct Pending {
    std::size_t block;
    const SetEntry* entry;
};

// Block names are compared without regard to case.
std::string NameKey(std::string name) {
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

VX_Type* Dereference(VX_Type* t) {
    if (auto* g = dynamic_cast<VX_GlobalBase*>(t)) return g->Target() ? g->Target() : t;
    return t;
}

// A fixed value from the file that lies outside the bounds the block's assignments (or the file)
// gave its variable (a temperature above a property block's T_MAX): the solver would never move
// it, and the models would be evaluated where they do not hold.
void CheckFixedValuesWithinBounds(const FlowsheetDocument& doc, const std::vector<Block>& blocks) {
    for (std::size_t b = 0; b < doc.blocks.size(); ++b) {
        for (const SetEntry& e : doc.blocks[b].sets) {
            auto found = zorexp_cli::ResolvePath(*blocks[b].model, e.path);
            if (!found.object) continue;
            ForEachVariable(*found.object, [&](VX_Variable& v) {
                const double x = v.fv();
                if (v.SourceOf(VX_ATTR_VALUE) != VX_SRC_USER || v.CurrSpec() != VX_SPEC_FIXED) return;
                const bool above = x > v.Upper();
                // Only bounds that were given (by the block or the file), not a type's defaults.
                if (!above && !(x < v.Lower())) return;
                if (v.SourceOf(above ? VX_ATTR_UPPER : VX_ATTR_LOWER) == VX_SRC_DEFAULT) return;
                throw InputError(e.pointer,
                                 blocks[b].name + "." + v.Path() + ": fixed value " + VX_Value(x, 0).ToString() +
                                     " lies " + (above ? "above the upper" : "below the lower") + " bound " +
                                     VX_Value(above ? v.Upper() : v.Lower(), 0).ToString(),
                                 e.pos);
            });
        }
    }
}

}  // namespace

BlockCreator CreatorFromFactories(std::function<FactoryFunction(const std::string& typeName)> find) {
    return [find = std::move(find)](const std::string& typeName, std::string& error) -> VX_Type* {
        const FactoryFunction factory = find(typeName);
        if (!factory) {
            error = "the model library has no factory for it";
            return nullptr;
        }
        VX_Containable* made = factory();
        if (!made) {
            error = "its factory made nothing";
            return nullptr;
        }
        auto* type = dynamic_cast<VX_Type*>(made);
        if (!type) {
            made->Release();
            error = "its factory made an object that holds no properties";
        }
        return type;
    };
}

Flowsheet::Flowsheet() : m_session(std::make_unique<VX_Session>()) {
    m_previous = VX_Session::MakeCurrent(m_session.get());
}

Flowsheet::~Flowsheet() {
    // Connections go first (they hold ports of the blocks), then the blocks, while their
    // session is current: numbered variables tell it they leave.
    m_connections.clear();
    for (auto it = m_blocks.rbegin(); it != m_blocks.rend(); ++it)
        if (it->model) it->model->Release();
    m_blocks.clear();
    VX_Session::MakeCurrent(m_previous);
}

std::unique_ptr<Flowsheet> Flowsheet::Build(const FlowsheetDocument& doc, const BlockCreator& create) {
    std::unique_ptr<Flowsheet> fs(new Flowsheet());
    for (const ComponentListSpec& list : doc.componentLists)
        fs->m_session->DefineComponentList(list.name, list.components, list.options);
    fs->CreateBlocks(doc, create);
    fs->Connect(doc);
    fs->LinkGlobals(doc);
    fs->ApplyGlobals(doc);
    fs->SetUp(doc);
    return fs;
}

void Flowsheet::CreateBlocks(const FlowsheetDocument& doc, const BlockCreator& create) {
    for (const BlockSpec& spec : doc.blocks) {
        std::string error;
        VX_Type* made = create(spec.type, error);
        const std::string typeAt = PointerChild(spec.pointer, "type");
        if (!made)
            throw InputError(typeAt, "block " + spec.name + ": unknown type \"" + spec.type + "\"" +
                                         (error.empty() ? "" : " (" + error + ")"));
        auto* model = dynamic_cast<VX_ModelType*>(made);
        if (!model || made->IsAPort()) {
            made->Release();
            throw InputError(typeAt, "block " + spec.name + ": type \"" + spec.type + "\" is not a model or structure");
        }
        m_blocks.push_back(Block{spec.name, spec.type, model});
        m_blockOfTop.emplace(model, static_cast<int>(m_blocks.size() - 1));
        m_blockByName.emplace(NameKey(spec.name), static_cast<int>(m_blocks.size() - 1));
        m_driver.AddBlock(*model);
        // A global declared with another type than by an earlier block is left unlinked.
        if (const VX_Failure& f = m_session->LastFailure(); f.status == VX_E_WRONGKIND && f.operation == "GlobalLink")
            throw InputError(PointerChild(spec.pointer, "type"), "block " + spec.name + " (" + spec.type + "): " + f.message);
        if (!spec.componentList.empty()) {
            VX_COMPONENTLISTNAME* list = model->ComponentList();
            const std::string at = PointerChild(spec.pointer, "components");
            if (!list) throw InputError(at, "block " + spec.name + ": type " + spec.type + " has no component list");
            std::string why;
            if (list->AssignUser(VX_ATTR_VALUE, VX_Value(spec.componentList.c_str(), 0), &why) == VX_AS_REFUSED)
                throw InputError(at, "block " + spec.name + ": component list \"" + spec.componentList + "\": " + why);
        }
    }
}

void Flowsheet::Connect(const FlowsheetDocument& doc) {
    // Global structures (a reaction configuration shared by the blocks) are driven like blocks.
    for (const auto& [name, object] : m_session->Globals())
        if (auto* structure = dynamic_cast<VX_ModelType*>(object)) m_driver.AddUnit(*structure);
    for (const ConnectionSpec& c : doc.connections) {
        // Every refusal names both ends.
        const std::string both = "connection " + c.from + " -> " + c.to + ": ";
        auto port = [&](const std::string& path, const char* key) -> VX_PortType& {
            const std::string at = PointerChild(c.pointer, key);
            const SourcePos pos = std::string(key) == "to" ? c.toPos : c.fromPos;
            const auto dot = path.find('.');
            if (dot == std::string::npos) throw InputError(at, both + "end \"" + path + "\" is not BLOCK.PORT", pos);
            const std::string blockName = path.substr(0, dot);
            const auto b = m_blockByName.find(NameKey(blockName));
            if (b == m_blockByName.end()) throw InputError(at, both + "end " + path + ": no block named " + blockName, pos);
            auto found = zorexp_cli::ResolvePath(*m_blocks[static_cast<std::size_t>(b->second)].model, path.substr(dot + 1));
            if (!found.object) throw InputError(at, both + "end " + path + ": " + found.problem, pos);
            if (auto* multi = dynamic_cast<VX_MULTIPORT_BaseType*>(found.object)) {
                const std::string& other = std::string(key) == "to" ? c.from : c.to;
                const std::string name = c.name.empty() ? other.substr(0, other.find('.')) : c.name;
                std::string why;
                VX_PortType* p = multi->AddConnection(name, &why);
                if (!p) throw InputError(at, both + why, pos);
                return *p;
            }
            auto* p = dynamic_cast<VX_PortType*>(found.object);
            if (!p) throw InputError(at, both + "end " + path + " is not a port", pos);
            return *p;
        };
        VX_PortType& from = port(c.from, "from");
        VX_PortType& to = port(c.to, "to");
        std::string why;
        std::unique_ptr<VX_Connection> made(
            VX_Connection::Make(from, to, &why, [this](const VX_Type& port) { return NameOf(port); }));
        if (!made) throw InputError(c.pointer, both + why, c.pos);
        m_driver.AddConnection(*made);
        m_connections.push_back(std::move(made));
    }
}

void Flowsheet::LinkGlobals(const FlowsheetDocument& doc) {
    // A block's "links" bind its external references to properties of blocks by path (a
    // CALCKEQ's T to a reactor's temperature); found first, so that nothing is half bound.
    std::map<std::pair<const VX_Type*, std::string>, VX_Type*> links;
    for (std::size_t b = 0; b < doc.blocks.size(); ++b)
        for (const SetEntry& l : doc.blocks[b].links) {
            VX_ModelType& owner = *m_blocks[b].model;
            const std::string who = "block " + m_blocks[b].name + ": external reference " + l.path;
            auto reference = zorexp_cli::ResolvePath(owner, l.path);
            if (!dynamic_cast<VX_ExternalBase*>(reference.object))
                throw InputError(l.pointer, who + ": " + (reference.object ? "not an external reference" : reference.problem), l.pos);
            const std::string& path = l.value.Text();
            const std::string blockName = path.substr(0, path.find('.'));
            const auto other = m_blockByName.find(NameKey(blockName));
            if (other == m_blockByName.end()) throw InputError(l.pointer, who + ": no block named " + blockName, l.pos);
            auto target = zorexp_cli::ResolvePath(*m_blocks[static_cast<std::size_t>(other->second)].model,
                                                  path.substr(path.find('.') + 1));
            if (!target.object) throw InputError(l.pointer, who + ": " + path + ": " + target.problem, l.pos);
            links[{&owner, NameKey(reference.object->LocalName())}] = Dereference(target.object);
        }
    // Any other external reference to a parameter (a mixer's EPS) stands for the flowsheet's
    // global of its name, which the file's "globals" may then set.
    const auto bind = [&links](VX_ModelType& owner, VX_ExternalBase& reference, const char* name) -> VX_Type* {
        if (const auto l = links.find({&owner, NameKey(name)}); l != links.end()) return l->second;
        return VX_SessionGlobalFor(reference, name);
    };
    if (m_driver.LinkExternals(bind) >= 0) return;
    const VX_ProtocolDriver::Failure& f = m_driver.LastFailure();
    const auto& unit = m_driver.Units()[static_cast<std::size_t>(f.unit)];
    const std::string at = unit.block >= 0 ? PointerChild(doc.blocks[static_cast<std::size_t>(unit.block)].pointer, "type") : "";
    throw InputError(at, Describe(*unit.object) + ": " + f.message);
}

void Flowsheet::ApplyGlobals(const FlowsheetDocument& doc) {
    for (const SetEntry& g : doc.globals) {
        auto* target = dynamic_cast<VX_VarParam*>(m_session->FindGlobal(g.path.c_str()));
        if (!target) {
            auto globals = m_session->Globals();
            std::sort(globals.begin(), globals.end());
            std::string used;
            for (const auto& [name, object] : globals) used += (used.empty() ? "" : ", ") + name;
            throw InputError(g.pointer, "no block uses a global named \"" + g.path + "\"" +
                                            (used.empty() ? " (the blocks use none)" : " (globals in use: " + used + ")"));
        }
        ApplyValue(*target, g.value, g.pointer, "global " + g.path);
    }
}

void Flowsheet::SetUp(const FlowsheetDocument& doc) {
    std::list<Pending> pending;
    for (std::size_t b = 0; b < doc.blocks.size(); ++b)
        for (const SetEntry& e : doc.blocks[b].sets) pending.push_back(Pending{b, &e});

    bool arraysToo = false;   // whole arrays are set once their size has settled
    bool havePrevious = false;
    unsigned long long previous = 0;
    for (m_rounds = 1; m_rounds <= kMaxRounds; ++m_rounds) {
        bool progressed = false;
        for (auto it = pending.begin(); it != pending.end();) {
            Block& block = m_blocks[it->block];
            const SetEntry& e = *it->entry;
            auto found = zorexp_cli::ResolvePath(*block.model, e.path);
            VX_Type* target = found.object ? Dereference(found.object) : nullptr;
            if (!target || (!arraysToo && dynamic_cast<VX_Matrix*>(target))) {
                ++it;
                continue;
            }
            ApplyValue(*target, e.value, e.pointer, block.name + "." + e.path);
            it = pending.erase(it);
            progressed = true;
        }
        if (m_driver.SetDims() < 0 || m_driver.ExecuteAssignments(kAssignmentLevel, VX_CTX_MODEL) < 0) {
            const VX_ProtocolDriver::Failure& f = m_driver.LastFailure();
            const VX_ProtocolDriver::Unit* unit = f.unit >= 0 ? &m_driver.Units()[static_cast<std::size_t>(f.unit)] : nullptr;
            const std::string who = unit ? Describe(*unit->object) : "the flowsheet";
            // Arrays sized from the file's values (NPTS and the like) beyond the limit: the file's fault.
            if (f.status == VX_E_SIZE_LIMIT && unit && unit->block >= 0) {
                const BlockSpec& spec = doc.blocks[static_cast<std::size_t>(unit->block)];
                throw InputError(spec.pointer, who + ": " + f.message + kSizeLimitHint, spec.pos);
            }
            throw ModelFailure(who + ": " + f.operation + " failed: " + f.message);
        }
        unsigned long long shape = 0;
        for (Block& block : m_blocks) shape = shape * 1000003ull + ShapeFingerprint(*block.model);
        const bool settled = havePrevious && shape == previous && !progressed;
        havePrevious = true;
        previous = shape;
        if (!settled) continue;
        if (pending.empty()) {
            CheckFixedValuesWithinBounds(doc, m_blocks);
            return;
        }
        if (arraysToo) {
            const Pending& p = pending.front();
            auto found = zorexp_cli::ResolvePath(*m_blocks[p.block].model, p.entry->path);
            throw InputError(p.entry->pointer, "block " + m_blocks[p.block].name + ": " + found.problem);
        }
        arraysToo = true;
    }
    throw ModelFailure("set-up does not settle: arrays still change size after " + std::to_string(kMaxRounds) +
                       " rounds of SetDims and ExecuteAssignments");
}

int Flowsheet::BlockOf(const VX_Type& object) const {
    const VX_Type* top = &object;
    while (top->Owner()) top = top->Owner();
    auto it = m_blockOfTop.find(top);
    return it == m_blockOfTop.end() ? -1 : it->second;
}

std::string Flowsheet::Describe(const VX_Type& object) const {
    if (auto* c = dynamic_cast<const VX_Connection*>(&object))
        return "the connection " + NameOf(c->From()) + " -> " + NameOf(c->To());
    const int b = BlockOf(object);
    if (b < 0) return object.TypeName() + " " + object.Path();
    const Block& block = m_blocks[static_cast<std::size_t>(b)];
    const std::string path = object.Path();
    std::string out = "block " + block.name + " (" + block.type + ")";
    if (!path.empty()) out += ", " + path + " (" + object.TypeName() + ")";
    return out;
}

std::string Flowsheet::NameOf(const VX_Type& object) const {
    const int b = BlockOf(object);
    const std::string path = object.Path();
    if (b < 0) return path;
    return path.empty() ? m_blocks[static_cast<std::size_t>(b)].name : m_blocks[static_cast<std::size_t>(b)].name + "." + path;
}

}  // namespace zx::flowsheet
