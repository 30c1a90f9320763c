// Kinetics blocks at the values users give them: power-law rates checked against a hand
// calculation, the branches that decide which equations exist (bases, water, empty reaction
// sets, adsorption terms), and the floors and ceilings that keep rates and constants finite.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model_driver.hpp"
#include "models/reactions/calckeq.hpp"
#include "models/reactions/lhhw.hpp"
#include "models/reactions/powerlaw.hpp"

namespace {

// One kinetics block alone in a session with the given components (and list options), its
// global structures set up before it and stand-ins for its other references.
template <class M>
struct Alone {
    ScopedSession session;
    std::unique_ptr<M> m;
    VX_ProtocolDriver driver;

    explicit Alone(std::vector<std::string> components, std::map<std::string, SUValue> options = {}) {
        session->DefineComponentList("LIST", std::move(components), std::move(options));
        m.reset(new M(true));
        AddGlobalStructures(driver, *session);
        driver.AddBlock(*m);
        EXPECT_GE(LinkGlobalsAndStandIns(driver), 0) << driver.LastFailure().message;
    }
    VX_VarParam& At(const std::string& path) {
        VX_PathResolution found = VX_ResolvePath(*m, path);
        auto* p = dynamic_cast<VX_VarParam*>(found.object);
        if (!p) throw std::runtime_error(path + ": " + found.problem);
        return *p;
    }
    // A user value: texts, integers and reals by the kind of the value given.
    template <class V>
    void Set(const std::string& path, V v) {
        std::string why;
        ASSERT_NE(At(path).AssignUser(VX_ATTR_VALUE, VX_Value(v, 0), &why), VX_AS_REFUSED) << path << ": " << why;
    }
    double& Value(const std::string& path) { return *At(path).RealSlot(); }
    // Sizes and assigns; settings of array elements go between Size() and SetUp().
    void Size() {
        ASSERT_GE(driver.SetDims(), 0) << driver.LastFailure().message;
        ASSERT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0) << driver.LastFailure().message;
        ASSERT_GE(driver.SetDims(), 0) << driver.LastFailure().message;
    }
    void SetUp() {
        ASSERT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0) << driver.LastFailure().message;
        ASSERT_GE(driver.SetUpEquations(), 0) << driver.LastFailure().message;
        rows.assign(static_cast<std::size_t>(driver.Entries()), -1);
        cols.assign(rows.size(), -1);
        ASSERT_GE(driver.JacPattern(rows.data(), cols.data()), 0) << driver.LastFailure().message;   // numbers the columns
    }
    // The paths of a row's entries, in order.
    std::vector<std::string> Entries(int row) {
        std::vector<std::string> out;
        for (std::size_t k = 0; k < rows.size(); ++k)
            if (rows[k] == row) out.push_back(session->Columns()[static_cast<std::size_t>(cols[k])]->Path());
        return out;
    }
    std::vector<int> rows, cols;
    std::vector<double> Residuals() {
        std::vector<double> r(static_cast<std::size_t>(driver.Rows()));
        EXPECT_GE(driver.Residuals(r.data()), 0) << driver.LastFailure().message;
        return r;
    }
    bool IsColumn(const std::string& path) {
        for (VX_VarParam* v : session->Columns())
            if (v->Path() == path) return true;
        return false;
    }
};

double MaxAbs(const std::vector<double>& r) {
    double worst = 0.0;
    for (double x : r) worst = std::max(worst, std::fabs(x));
    return worst;
}

// A -> B -> C, first order in A and in B, molarities 5, 3 and 2 kmol/m3 at 100 C in 2 m3.
TEST(PowerLaw, SeriesReactionsMatchAHandCalculation) {
    Alone<VX_POWERLAW> b({"A", "B", "C"});
    b.Set("NR", 2);
    b.Size();
    const double z[] = {0.5, 0.3, 0.2};
    const char* names[] = {"A", "B", "C"};
    for (int r = 1; r <= 2; ++r) {
        const std::string rs = std::to_string(r);
        b.Set("CBASIS(" + rs + ")", "Molarity");
        b.Value("RHO(" + rs + ")") = 10.0;
        b.Value("V(" + rs + ")") = 2.0;
        for (int c = 0; c < 3; ++c) b.Value(std::string("Z(") + names[c] + "," + rs + ")") = z[c];
    }
    b.Set("EXPONENT(A,1)", 1.0);
    b.Set("EXPONENT(B,2)", 1.0);
    b.Set("COEF(A,1)", -1.0);
    b.Set("COEF(B,1)", 1.0);
    b.Set("COEF(B,2)", -1.0);
    b.Set("COEF(C,2)", 1.0);
    b.Set("PRE_EXP(1)", 2e-3);
    b.Set("PRE_EXP(2)", 1e-3);
    b.Set("ACT_ENERGY(1)", 0.05);
    b.Set("ACT_ENERGY(2)", 0.06);
    b.Set("QHR(1)", -0.08);
    b.Set("QHR(2)", -0.05);
    b.Value("T") = 100.0;
    b.SetUp();
    ASSERT_EQ(b.driver.Rows(), 6 + 8 + 3 + 2 + 1);

    // By hand: k = A exp(-E / (R T)) per second, rate = 3600 s/hr * V * k * c.
    const double k1 = 2e-3 * std::exp(-5e4 / (8.31433 * 373.15));   // 2.0e-10 /s
    const double k2 = 1e-3 * std::exp(-6e4 / (8.31433 * 373.15));
    const double r1 = 3600.0 * 2.0 * k1 * 5.0, r2 = 3600.0 * 2.0 * k2 * 3.0;
    for (int r = 1; r <= 2; ++r)
        for (int c = 0; c < 3; ++c) {
            const std::string e = std::string("(") + names[c] + "," + std::to_string(r) + ")";
            b.Value("CONC" + e) = 10.0 * z[c];
            // A zero exponent shifts the concentration by RTOL.
            const bool first = (r == 1 && c == 0) || (r == 2 && c == 1);
            b.Value("CONCA" + e) = 10.0 * z[c] + (first ? 0.0 : 1e-9);
        }
    b.Value("RATEP(1)") = r1;
    b.Value("RATEP(2)") = r2;
    b.Value("RATE(A)") = -r1;
    b.Value("RATE(B)") = r1 - r2;
    b.Value("RATE(C)") = r2;
    b.Value("QH(1)") = -0.08;
    b.Value("QH(2)") = -0.05;
    b.Value("QTOT") = -0.08 * r1 - 0.05 * r2;
    const std::vector<double> residuals = b.Residuals();
    EXPECT_LT(MaxAbs(residuals), 1e-12 * r1) << "rates " << r1 << ", " << r2;
    EXPECT_NEAR(r1, 7.2146e-6, 1e-10);   // kmol/hr
}

TEST(PowerLaw, WhichEquationsExist) {
    {   // molality needs the water component: without it, no concentration equations
        Alone<VX_POWERLAW> b({"A", "B"});
        b.Set("NR", 1);
        b.Size();
        b.Set("CBASIS(1)", "Molality");
        b.SetUp();
        EXPECT_EQ(b.driver.Rows(), 0 + 3 + 2 + 1 + 1);
        EXPECT_FALSE(b.IsColumn("Z(A,1)"));
    }
    {   // with it (named in any case), molalities per kg of water
        Alone<VX_POWERLAW> b({"WATER", "A"});
        b.Set("NR", 1);
        b.Size();
        b.Set("CBASIS(1)", "molality");
        b.SetUp();
        EXPECT_EQ(b.driver.Rows(), 2 + 3 + 2 + 1 + 1);
        b.Value("Z(WATER,1)") = 0.9;
        b.Value("Z(A,1)") = 0.1;
        b.Value("MWS(WATER)") = 18.0;
        b.Value("CONC(A,1)") = 1000.0 * 0.1 / (18.0 * 0.9);
        EXPECT_NEAR(b.Residuals()[1], 0.0, 1e-12);
    }
    for (int nr : {0, -3}) {   // no reactions: nothing generated, no duty, no failure
        Alone<VX_POWERLAW> b({"A", "B"});
        b.Set("NR", nr);
        b.Size();
        b.SetUp();
        EXPECT_EQ(b.driver.Rows(), 2 + 1);
        b.Value("RATE(A)") = 0.0;
        b.Value("RATE(B)") = 0.0;
        b.Value("QTOT") = 0.0;
        EXPECT_EQ(MaxAbs(b.Residuals()), 0.0);
    }
    {   // KBASE other than 1: no procedure, and the standard enthalpies take no part
        Alone<VX_POWERLAW> b({"A", "B"}, {{"KBASE", SUValue("2")}});
        b.Set("NR", 1);
        b.Size();
        b.SetUp();
        EXPECT_EQ(b.At("KBASE").ValueText(), "2");
        EXPECT_FALSE(b.IsColumn("HL(A)") || b.IsColumn("HV(A)") || b.IsColumn("QPROP(1)"));
        EXPECT_TRUE(b.IsColumn("QHR(1)"));
    }
}

TEST(PowerLaw, BadValuesAreRefusedNamingThem) {
    Alone<VX_POWERLAW> b({"A"});
    b.Set("NR", 1);
    b.Size();
    std::string why;
    EXPECT_EQ(b.At("CBASIS(1)").AssignUser(VX_ATTR_VALUE, VX_Value("Molar", 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find("Molar"), std::string::npos) << why;
    EXPECT_EQ(b.At("CBASIS(1)").ValueText(), "Molarity");   // unchanged
}

TEST(PowerLaw, PowersStayFiniteAtTheEdges) {
    Alone<VX_POWERLAW> b({"A", "B"});
    b.Set("NR", 1);
    b.Size();
    b.Set("EXPONENT(A,1)", 1e-9);    // equal to RTOL: shifted
    b.Set("EXPONENT(B,1)", -1.0);
    b.Set("TOTERM(1)", "yes");       // reference form, compared without regard to case
    b.Set("TO(1)", 100.0);
    b.Value("T") = 100.0;
    b.Set("PRE_EXP(1)", 1e-30);
    b.SetUp();
    // Rows: CONC(A), CONC(B), CONCA(A), CONCA(B), RATEP, ...
    EXPECT_EQ(b.Entries(4), (std::vector<std::string>{"RATEP(1)", "HR_TO_S", "V(1)", "PRE_EXP(1)", "T", "C_TO_K", "TO(1)",
                                                      "TEMP_EXP(1)", "ACT_ENERGY(1)", "R", "CONCA(A,1)", "EXPONENT(A,1)",
                                                      "CONCA(B,1)", "EXPONENT(B,1)"}));
    b.Value("CONC(A,1)") = 2.0;
    b.Value("CONCA(A,1)") = 2.0;
    EXPECT_NEAR(b.Residuals()[2], -1e-9, 1e-15);
    b.Value("V(1)") = 1.0;
    b.Value("RATEP(1)") = 0.0;
    for (double conca : {0.0, -1.0, std::nan("")}) {
        b.Value("CONCA(B,1)") = conca;   // floored at 1e-35, so the power is 1e35
        const double rate = b.Residuals()[4];
        EXPECT_TRUE(std::isfinite(rate)) << conca;
        // At T = TO the temperature factors are one: 3600 * V * PRE_EXP * 2^1e-9 * 1e35.
        EXPECT_NEAR(-rate, 3600.0 * 1e-30 * std::pow(2.0, 1e-9) * 1e35, 1e-6) << conca;
    }
}

TEST(Lhhw, AdsorptionTermsAndTheirFloor) {
    Alone<VX_LHHW> b({"A", "B"});
    b.Set("NR", 2);
    b.Set("NTERM", 2);
    b.Size();
    b.Set("NTERMS(1)", 1);   // one of two terms
    b.Set("NTERMS(2)", 0);   // none
    b.Set("KAD(1,1,1)", -30.0);
    b.SetUp();
    // Reaction 1: two term equations and five others, reaction 2: the five others.
    EXPECT_TRUE(b.IsColumn("KADTERM(1,1)"));
    EXPECT_FALSE(b.IsColumn("KADTERM(1,2)") || b.IsColumn("KADTERM(2,1)"));
    ASSERT_EQ(b.driver.Rows(), 4 + 7 + 5 + 2 + 2 + 1);
    b.Value("KADTERM(1,1)") = std::exp(-30.0);
    b.Value("ADEXPRESS(1)") = 1.0;   // e^-30 is held at one (ADSSCALE is one here)
    b.Value("ADEXPRESS(2)") = 1.0;
    const std::vector<double> r = b.Residuals();
    EXPECT_DOUBLE_EQ(r[6], 0.0);        // reaction 1's adsorption expression
    EXPECT_DOUBLE_EQ(r[11], 0.0);       // reaction 2's: one
}

TEST(Lhhw, ScalesFollowTheBasisAndExponents) {
    Alone<VX_LHHW> b({"A", "B"});
    b.Set("NR", 2);
    b.Set("NTERM", 1);
    b.Size();
    b.Set("CBASIS(1)", "Partial pressure");
    b.Set("DR_EXP1(A,1)", 1.0);
    b.Set("DR_EXP1(B,1)", 1.0);
    b.Set("AD_EXP(A,1,1)", 0.5);
    b.Set("ADS_POW(1)", 2.0);
    b.Set("DR_EXP1(A,2)", 1.0);
    b.SetUp();
    EXPECT_DOUBLE_EQ(b.Value("DRVSCALE(1)"), 1e10);
    EXPECT_DOUBLE_EQ(b.Value("ADSSCALE(1)"), 1e5);   // (1e5^0.5 e^0)^2
    EXPECT_DOUBLE_EQ(b.Value("DRVSCALE(2)"), 1.0);
    EXPECT_DOUBLE_EQ(b.Value("ADSSCALE(2)"), 1.0);
}

TEST(CalcKeq, CorrelationIsCappedButItsLogarithmIsNot) {
    Alone<VX_CALCKEQ> b({"A", "B"});
    b.Set("IRXN", "R1");
    b.At("IRXNCFG.RXNS").AssignUser(VX_ATTR_VALUE, VX_Value(VX_StrSetValue(std::vector<std::string>{"R1"}), 0));
    b.Size();
    b.Set("IRXNCFG.KEQA(R1)", 40.0);   // ln K = 40 > ln 1e15
    b.SetUp();
    ASSERT_EQ(b.driver.Rows(), 3);
    b.Value("T") = 80.0;
    b.Value("TEQ") = 80.0;   // no temperature approach
    b.Value("LNKEQ") = 40.0;
    b.Value("KEQ") = 1e15;
    EXPECT_EQ(b.Residuals(), (std::vector<double>{0.0, 0.0, 0.0}));
}

}  // namespace
