#include "script_command.hpp"

#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "errors.hpp"
#include "frame/registry.hpp"
#include "model_library.hpp"
#include "zorexp/utf8_encoding.hpp"
#include "zorexp/zorexp.hpp"

namespace zorexp_cli {
namespace {

struct ReleaseObject {
    void operator()(VX_Containable* p) const { p->Release(); }
};

// UTF-8 of wide text (UTF-32 here).
std::string Utf8(const std::wstring& text) {
    std::string out;
    for (const wchar_t wc : text) VX_AppendUtf8(out, static_cast<char32_t>(wc));
    return out;
}

const VX_RegistryEntry& FindContainer(const std::string& typeName) {
    const VX_RegistryEntry* entry = VX_RegistryFind(typeName.c_str());
    if (!entry && typeName.size() > 3 && VX_EqualCI(typeName.substr(0, 3).c_str(), "VX_"))
        entry = VX_RegistryFind(typeName.substr(3).c_str());
    if (!entry) throw BadInput("unknown type \"" + VX_BriefText(typeName) + "\" (zorexp types lists them all)");
    if (!entry->exported)
        throw BadInput(std::string(entry->name) + " is a " + entry->kind + " type: only models carry scripts");
    return *entry;
}

}  // namespace

std::string ScriptReport(const std::string& typeName, const std::string& scriptName, bool json) {
    const VX_RegistryEntry& entry = FindContainer(typeName);
    ModelLibrary& library = ModelLibrary::Instance();
    ModelLibrary::Factory factory = library.FindFactory(entry.name);
    if (!factory) throw HostFailure("model library " + library.Path() + " has no export " + entry.name + "Factory");
    std::unique_ptr<VX_Containable, ReleaseObject> object(factory());
    if (!object) throw HostFailure(std::string(entry.name) + "Factory returned no object");

    const wchar_t* text = object->Script(scriptName.c_str(), 0);
    if (!text) {
        int count = 0;
        while (object->Script(nullptr, count)) ++count;
        throw BadInput(std::string(entry.name) + " has no script \"" + VX_BriefText(scriptName) + "\" (it has " +
                       (count == 0 ? std::string("none") : std::to_string(count) + (count == 1 ? " script" : " scripts")) +
                       ")");
    }
    const std::string utf8 = Utf8(text);
    if (!json) return utf8;

    int index = 0;
    while (object->Script(nullptr, index) && object->Script(nullptr, index) != text) ++index;
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < utf8.size();) {
        const std::size_t end = utf8.find('\n', start);
        lines.push_back(utf8.substr(start, end == std::string::npos ? std::string::npos : end - start));
        start = end == std::string::npos ? utf8.size() : end + 1;
    }
    const nlohmann::json report = {{"type", entry.name},
                                   {"name", scriptName},
                                   {"index", index},
                                   {"length", std::wstring(text).size()},
                                   {"lines", lines}};
    return report.dump(2) + "\n";
}

}  // namespace zorexp_cli
