#pragma once
// VX_ProcedureTemplate: the binding of one declaration. P is the declaration class itself (it
// derives from its own instance of the template); NIn, NOut and NDims are its argument counts and
// the sum of their dimension counts, Lang its language flavour and Version the routine interface
// it needs. The template holds the per-argument tables at their compile-time sizes and hands them,
// with the declaration's hooks, to the runtime's VX_ProcedureType, which does the packing, the
// call and the equations (one implementation for all declarations).
#include <array>

#include "procedures/procedure_signature.hpp"
#include "zorexp/procedure_languages.hpp"

template <class P, int NIn, int NOut, int NDims, class Lang, int Version>
class VX_ProcedureTemplate : public Lang {
public:
    static constexpr int InputArgs() { return NIn; }
    static constexpr int OutputArgs() { return NOut; }
    static constexpr int TotalArgs() { return NIn + NOut; }
    static constexpr int Dimensions(int arg) { return P::kArgs[static_cast<std::size_t>(arg)].dims; }
    static constexpr int Type(int arg) { return P::kArgs[static_cast<std::size_t>(arg)].type; }
    static constexpr bool IsVariableInput(int arg) { return arg < NIn && P::kArgs[static_cast<std::size_t>(arg)].writtenBack; }

protected:
    VX_ProcedureTemplate(bool counting, int mode, VX_COMPONENTLISTNAME* list) : Lang(P::kDeclaration) {
        static_assert(NIn + NOut > 0, "a procedure has arguments");
        static_assert(P::kDeclaration.inputs == NIn && P::kDeclaration.outputs == NOut && P::kDeclaration.dims == NDims &&
                          P::kDeclaration.version == Version,
                      "template arguments agree with the declaration");
        this->SetMode(counting, mode);
        this->SetComponentList(list);
        this->AttachTables(VX_ProcedureTables{m_offsets.data(), m_byReference.data(), m_constants.data(), m_dimensionSizes.data()},
                           P::ReturnsDerivatives(), P::AlwaysCall(), P::PostsetInputs());
    }

private:
    std::array<int, NIn + NOut> m_offsets{};
    std::array<bool, NIn + NOut> m_byReference{};
    std::array<ConstProcValue, NIn + NOut> m_constants{};
    std::array<int, (NDims > 0 ? NDims : 1)> m_dimensionSizes{};
};

// The declaration class of one row of procedures.def (see procedure_declarations.hpp).
#define VX_PROC_TEMPLATE_OF(NAME, SIGNATURE, LANG, VERSION)                                               \
    VX_ProcedureTemplate<VXProc_##NAME, VX_SignatureInputs(SIGNATURE), VX_SignatureOutputs(SIGNATURE), \
                         VX_SignatureDims(SIGNATURE), VX_ProcedureType_##LANG, VERSION>

#define VX_PROC_FLAG_yes true
#define VX_PROC_FLAG_no false

#define VX_PROC_CONSTRUCTOR_yes(NAME) \
    VXProc_##NAME(bool counting, int mode, VX_COMPONENTLISTNAME* list) : Base(counting, mode, list) {}
#define VX_PROC_CONSTRUCTOR_no(NAME) \
    VXProc_##NAME(bool counting, int mode) : Base(counting, mode, nullptr) {}

#define VX_PROC_DERIVATIVES_yes                                           \
    static bool ReturnsDerivatives() { return true; }                     \
    void CreateDerivatives() override { this->HandleDerivatives(false); } \
    void NegateDerivatives() override { this->HandleDerivatives(true); }
#define VX_PROC_DERIVATIVES_no

// NAME, "library", "entry", version, F or C, "argument list", yes/no derivatives, yes/no list.
#define VX_DECLARE_PROCEDURE(NAME, LIBRARY, ENTRY, VERSION, LANG, SIGNATURE, DERIVATIVES, LIST)                          \
    class VXProc_##NAME : public VX_PROC_TEMPLATE_OF(NAME, SIGNATURE, LANG, VERSION) {                                   \
        using Base = VX_PROC_TEMPLATE_OF(NAME, SIGNATURE, LANG, VERSION);                                                \
                                                                                                                         \
    public:                                                                                                              \
        static constexpr auto kArgs =                                                                                    \
            VX_SignatureArgs<VX_SignatureInputs(SIGNATURE) + VX_SignatureOutputs(SIGNATURE)>(SIGNATURE);                 \
        static constexpr VX_ProcedureDeclaration kDeclaration{                                                           \
            #NAME, LIBRARY, ENTRY, VERSION, #LANG[0], SIGNATURE, VX_SignatureInputs(SIGNATURE),                           \
            VX_SignatureOutputs(SIGNATURE), VX_SignatureDims(SIGNATURE), kArgs.data(), VX_PROC_FLAG_##DERIVATIVES,        \
            VX_PROC_FLAG_##LIST};                                                                                        \
        VX_PROC_CONSTRUCTOR_##LIST(NAME)                                                                                 \
        VX_PROC_DERIVATIVES_##DERIVATIVES                                                                                \
        const char* DLLName() const override { return LIBRARY; }                                                        \
        const char* ProcedureName() const override { return ENTRY; }                                                    \
    };
