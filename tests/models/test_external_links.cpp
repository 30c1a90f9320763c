// External references bound by path by the driver's linking pass: what they read becomes a
// term of the equations (with its own column), a binding of the wrong kind is refused, and
// an equation over a reference nothing is bound to fails naming it.
#include <gtest/gtest.h>

#include "model_driver.hpp"
#include "models/unitops/rplug_tcool1.hpp"
#include "test_external.hpp"

namespace {

struct Linked {
    ScopedSession session;
    VX_TESTEXTERNAL reader{true};
    VX_RPLUG_TCOOL1 other{true};
    VX_ProtocolDriver driver;
    Linked() {
        driver.AddBlock(reader);
        driver.AddBlock(other);
    }
    std::int32_t Link(VX_Type* t, VX_Type* eps) {
        return driver.LinkExternals([&](VX_ModelType&, VX_ExternalBase&, const char* name) -> VX_Type* {
            return std::string(name) == "T" ? t : eps;
        });
    }
};

TEST(ExternalLinks, BoundReferencesAreTermsOfTheEquations) {
    Linked l;
    VX_REALPARAMETER* eps = l.session->Global<VX_REALPARAMETER>("EPS");
    ASSERT_EQ(l.Link(&l.other.T_COOL, eps), VX_S_OK);
    ASSERT_GE(l.driver.SetDims(), 0);
    ASSERT_GE(l.driver.ExecuteAssignments(0, VX_CTX_MODEL), 0);
    EXPECT_EQ(eps->fv(), 0.5);   // the reader's assignment reached the object it is bound to
    l.other.T_COOL.SetSolverValue(40.0);
    l.reader.Y.SetSolverValue(3.0);
    ASSERT_GE(l.driver.SetUpEquations(), 0) << l.driver.LastFailure().message;
    std::vector<int> rows(static_cast<std::size_t>(l.driver.Entries())), cols(rows.size());
    ASSERT_GE(l.driver.JacPattern(rows.data(), cols.data()), 0);
    std::vector<std::string> names;
    for (int c : cols) names.push_back(l.session->Columns()[static_cast<std::size_t>(c)]->Path());
    EXPECT_EQ(names, (std::vector<std::string>{"Y", "T_COOL", "EPS"}));
    std::vector<double> r(1), v(3);
    ASSERT_GE(l.driver.Residuals(r.data()), 0);
    ASSERT_GE(l.driver.Jacobian(v.data()), 0);
    EXPECT_DOUBLE_EQ(r[0], 3.0 - 40.0 * 0.5);
    EXPECT_EQ(v, (std::vector<double>{1.0, -0.5, -40.0}));
}

TEST(ExternalLinks, AnObjectOfTheWrongKindIsRefusedNamingBoth) {
    Linked l;
    EXPECT_EQ(l.Link(&l.other.NPTS, nullptr), VX_E_WRONGKIND);
    EXPECT_NE(l.driver.LastFailure().message.find("external reference T takes"), std::string::npos)
        << l.driver.LastFailure().message;
    EXPECT_NE(l.driver.LastFailure().message.find("NPTS"), std::string::npos);
    EXPECT_FALSE(l.reader.T.IsLinked());
}

TEST(ExternalLinks, EquationsOverAnUnboundReferenceFailNamingIt) {
    Linked l;
    ASSERT_GE(l.driver.SetDims(), 0);
    ASSERT_GE(l.driver.ExecuteAssignments(0, VX_CTX_MODEL), 0);   // skips EPS := 0.5: nothing to assign to
    EXPECT_EQ(l.driver.SetUpEquations(), VX_E_MODEL);
    EXPECT_EQ(l.driver.LastFailure().message, "external reference T is not bound to an object");
    EXPECT_EQ(l.driver.LastFailure().unit, 0);
}

TEST(ExternalLinks, ParameterReferencesFallBackOnTheSessionsGlobalOfTheirName) {
    auto toGlobals = [](VX_ModelType&, VX_ExternalBase& reference, const char* name) {
        return VX_SessionGlobalFor(reference, name);
    };
    {
        Linked l;
        ASSERT_EQ(l.driver.LinkExternals(toGlobals), VX_S_OK);
        EXPECT_FALSE(l.reader.T.IsLinked());   // a variable is bound by path, never to a global
        ASSERT_NE(l.session->FindGlobal("eps"), nullptr);
        EXPECT_EQ(l.reader.EPS.Target(), l.session->FindGlobal("EPS"));
        ASSERT_GE(l.driver.SetDims(), 0);
        ASSERT_GE(l.driver.ExecuteAssignments(0, VX_CTX_MODEL), 0);
        EXPECT_EQ(l.session->Global<VX_REALPARAMETER>("EPS")->fv(), 0.5);
    }
    {
        // A global of another kind declared first is the one meant: the link refuses it.
        Linked l;
        l.session->Global<VX_INTEGERPARAMETER>("EPS");
        EXPECT_EQ(l.driver.LinkExternals(toGlobals), VX_E_WRONGKIND);
        EXPECT_NE(l.driver.LastFailure().message.find("external reference EPS takes"), std::string::npos)
            << l.driver.LastFailure().message;
    }
}

}  // namespace
