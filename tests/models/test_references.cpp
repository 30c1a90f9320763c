#include <gtest/gtest.h>

#include "frame/arrays.hpp"
#include "frame/references.hpp"
#include "model_driver.hpp"
#include "models/unitops/rplug_tcool.hpp"
#include "models/unitops/rplug_tcool1.hpp"

namespace {

using TemperatureArray = VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE>;

TEST(External, ModelReferenceAcceptsOnlyItsType) {
    VX_External<VX_RPLUG_TCOOL1> ref(true);
    EXPECT_STREQ(ref.ExternalTypeName(), "Model RPLUG_TCOOL1\tV7.0");
    VX_RPLUG_TCOOL model(true);
    EXPECT_EQ(ref.ExternalLink(&model), VX_E_WRONGKIND);
    EXPECT_FALSE(ref.IsLinked());
    VX_RPLUG_TCOOL1 target(true);
    ASSERT_EQ(ref.ExternalLink(&target), VX_S_OK);
    EXPECT_EQ(&*ref, &target);
    EXPECT_EQ(&ref->NPTS, &target.NPTS);
}

TEST(External, ArrayReferenceAcceptsAnyArray) {
    VX_External<TemperatureArray> ref(true);
    EXPECT_STREQ(ref.ExternalTypeName(), VX_MatrixContainerId());
    VX_ARRAY_S<VX_HEAT_FLUX, VX_HEAT_FLUX> fluxes(true);
    EXPECT_EQ(ref.ExternalLink(&fluxes), VX_S_OK);
    VX_TEMPERATURE scalar(true);
    EXPECT_EQ(ref.ExternalLink(&scalar), VX_E_WRONGKIND);
}

TEST(External, VariableReferenceLinksToAnyRealVariable) {
    VX_External<VX_TEMPERATURE> ref(true);
    EXPECT_STREQ(ref.ExternalTypeName(), VX_RealVariableContainerId());
    VX_HEAT_FLUX flux(true);
    ASSERT_EQ(ref.ExternalLink(&flux), VX_S_OK);
    flux.SetSolverValue(3.5);
    EXPECT_EQ(ref->fv(), 3.5);
}

TEST(Virtual, DefaultObjectsAreMadeOnLink) {
    VX_Virtual<VX_RPLUG_TCOOL1> model(true);
    EXPECT_STREQ(model.VirtualBaseType(), "Model RPLUG_TCOOL1\tV7.0");
    ASSERT_EQ(model.VirtualLink(), VX_S_OK);
    EXPECT_NE(model->FindProperty("T_COOL_"), nullptr);   // made with its properties
    EXPECT_EQ(model.VirtualLink(), VX_S_FALSE);            // already there

    VX_Virtual<TemperatureArray> array(true);
    EXPECT_STREQ(array.VirtualBaseType(), VX_MatrixContainerId());
    ASSERT_EQ(array.VirtualLink(), VX_S_OK);
    EXPECT_EQ(array->Size(), 0);
    VX_Virtual<TemperatureArray> copy(array);
    EXPECT_EQ(copy.Target(), nullptr);
}

TEST(Global, ModelsOfOneSessionShareTheirGlobals) {
    ScopedSession session;
    VX_RPLUG_TCOOL a(true), b(true);
    EXPECT_EQ(&*a.PI, &*b.PI);
    EXPECT_EQ(&*a.PI, session->Global<VX_REALPARAMETER>("pi"));
    EXPECT_NE(&*a.PI, &*a.UCF6);
}

TEST(Global, TheFirstDeclarationFixesTheType) {
    ScopedSession session;
    VX_RPLUG_TCOOL a(true);
    std::string why;
    EXPECT_EQ(session->Global<VX_INTEGERPARAMETER>("PI", &why), nullptr);
    EXPECT_NE(why.find("INTEGERPARAMETER"), std::string::npos) << why;
    EXPECT_NE(why.find("REALPARAMETER"), std::string::npos) << why;
    // A reference of the other type stays unlinked and says so; the first one is untouched.
    VX_Global<VX_INTEGERPARAMETER> wrong;
    EXPECT_EQ(wrong.GlobalLink("pi"), VX_E_WRONGKIND);
    EXPECT_EQ(wrong.Target(), nullptr);
    EXPECT_EQ(session->LastFailure().status, VX_E_WRONGKIND);
    EXPECT_EQ(&*a.PI, session->Global<VX_REALPARAMETER>("PI"));
}

}  // namespace
