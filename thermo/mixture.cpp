#include "thermo/mixture.hpp"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include <fmt/format.h>

namespace zx::thermo {
namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

std::size_t Position(const Mixture& m, std::size_t dbIndex) {
    for (std::size_t i = 0; i < m.Size(); ++i)
        if (m.indices[i] == dbIndex) return i;
    return ComponentDatabase::npos;
}

void SetPair(Mixture& m, std::size_t i, std::size_t j, double k) {
    const std::size_t n = m.Size();
    m.kij[i * n + j] = k;
    m.kij[j * n + i] = k;
}

void ApplyInteractionText(Mixture& m, std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find(';');
        const std::string_view item = Trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
        if (item.empty()) continue;
        const std::size_t colon = item.find(':'), equals = item.find('=');
        if (colon == std::string_view::npos || equals == std::string_view::npos || equals < colon)
            throw PropertyError(fmt::format("{} item \"{}\" is not ID1:ID2=value", kInteractionOption, item));
        const std::size_t a = m.database->Require(Trim(item.substr(0, colon)));
        const std::size_t b = m.database->Require(Trim(item.substr(colon + 1, equals - colon - 1)));
        const std::string number(Trim(item.substr(equals + 1)));
        char* stop = nullptr;
        errno = 0;
        const double k = std::strtod(number.c_str(), &stop);
        if (number.empty() || *stop != '\0' || errno != 0 || !std::isfinite(k))
            throw PropertyError(fmt::format("{} item \"{}\": \"{}\" is not a number", kInteractionOption, item, number));
        const std::size_t i = Position(m, a), j = Position(m, b);
        if (i == ComponentDatabase::npos || j == ComponentDatabase::npos)
            throw PropertyError(fmt::format("{} item \"{}\" names a component that is not in the list", kInteractionOption, item));
        if (i == j) throw PropertyError(fmt::format("{} item \"{}\" pairs a component with itself", kInteractionOption, item));
        SetPair(m, i, j, k);
    }
}

}  // namespace

Method ParseMethod(std::string_view text) {
    const std::string t = UpperCase(Trim(text));
    if (t == "IDEAL") return Method::Ideal;
    if (t == "PENG-ROBINSON") return Method::PengRobinson;
    throw PropertyError(fmt::format("{} \"{}\" is not a method (IDEAL or PENG-ROBINSON)", kMethodOption, text));
}

const char* MethodName(Method method) { return method == Method::Ideal ? "IDEAL" : "PENG-ROBINSON"; }

Mixture MakeMixture(const ComponentDatabase& db, const std::vector<std::string>& ids, Method method, std::string_view interactions) {
    Mixture m;
    m.database = &db;
    m.method = method;
    for (const std::string& id : ids) {
        std::size_t index;
        try {
            index = db.Require(id);
        } catch (const DatabaseError& e) {
            throw UnknownComponentError(e.what());
        }
        if (Position(m, index) != ComponentDatabase::npos)
            throw PropertyError(fmt::format("component \"{}\" is in the list twice", id));
        m.indices.push_back(index);
        m.components.push_back(&db.Components()[index]);
    }
    m.kij.assign(m.Size() * m.Size(), 0.0);
    if (method == Method::PengRobinson) {
        for (const InteractionParameter& p : db.Interactions()) {
            const std::size_t i = Position(m, p.i), j = Position(m, p.j);
            if (p.method == "PENG-ROBINSON" && i != ComponentDatabase::npos && j != ComponentDatabase::npos) SetPair(m, i, j, p.kij);
        }
        try {
            ApplyInteractionText(m, interactions);
        } catch (const DatabaseError& e) {
            throw PropertyError(fmt::format("{}: {}", kInteractionOption, e.what()));
        }
    }
    return m;
}

}  // namespace zx::thermo
