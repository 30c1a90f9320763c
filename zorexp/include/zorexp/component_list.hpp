#pragma once
// Component lists: a model's list name (a string parameter naming a list of the session) and
// access to the list's components and options.
#include "zorexp/parameters.hpp"
#include "zorexp/session.hpp"

class VX_COMPONENTLISTNAME : public VX_STRINGPARAMETER {
public:
    explicit VX_COMPONENTLISTNAME(bool initialize = true) : VX_STRINGPARAMETER(initialize) {}
    bool IsComponentListName() const override { return true; }
    // The components of the named list (the session's default list when no name is set);
    // empty when the list does not exist (always the same empty set, so that arrays sized over
    // it and loops over it agree).
    VX_StrSetValue v() const;
    const VX_ComponentListData* List() const;
    VX_HRESULT BeginPropertiesCall() { return VX_S_OK; }
    VX_HRESULT EndPropertiesCall() { return VX_S_OK; }
};

// An option of a component list (such as "KBASE"), read through the model's list name.
class VX_ComponentListOption {
public:
    VX_ComponentListOption(const VX_COMPONENTLISTNAME& list, const char* option)
        : m_list(&list), m_option(option) {}
    // The option's value; Empty when the list or the option does not exist.
    SUValue v() const;
    // The option as a set of texts (such as SEGMENTS): its members in the stored-set form
    // ("S1\"S2\""), or a plain text as one member; empty when there is no such option.
    VX_StrSetValue StringSet() const;

private:
    const VX_COMPONENTLISTNAME* m_list;
    const char* m_option;
};
