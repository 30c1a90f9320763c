// Every type that a model description defines, under the settings its description lists for
// checks (or its defaults): the driver's pattern, residuals and Jacobian agree with each other,
// and every analytic entry agrees with a finite difference at several random points near the
// type's default values. New types join by themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "checks/driver_jacobian_check.hpp"
#include "frame/check_cases.hpp"
#include "model_driver.hpp"

namespace {

struct Released {
    void operator()(VX_ModelType* m) const { delete m; }
};

// "NPTS=3" as a user value of the property it names: an integer, a real number or a text by
// the property's kind. Left for a later round (applied false) while the path names nothing
// yet: an element exists once its array is sized.
void ApplySetting(VX_ModelType& m, const std::string& setting, bool& applied) {
    const auto eq = setting.find('=');
    ASSERT_NE(eq, std::string::npos) << setting;
    const std::string path = setting.substr(0, eq), text = setting.substr(eq + 1);
    VX_PathResolution found = VX_ResolvePath(m, path);
    applied = found.object != nullptr;
    if (!applied) return;
    // A multiport takes the names of its connections, separated by commas.
    if (auto* multiport = dynamic_cast<VX_MULTIPORT_BaseType*>(found.object)) {
        for (std::size_t start = 0; start <= text.size();) {
            const auto end = std::min(text.find(',', start), text.size());
            std::string why;
            ASSERT_NE(multiport->AddConnection(text.substr(start, end - start), &why), nullptr) << setting << ": " << why;
            start = end + 1;
        }
        return;
    }
    auto* p = dynamic_cast<VX_VarParam*>(found.object);
    ASSERT_NE(p, nullptr) << path;
    VX_Value value;
    switch (p->GetKind()) {
    case VX_VarParam::IntegerParameter: value = VX_Value(std::stoi(text), 0); break;
    case VX_VarParam::RealVariable:
    case VX_VarParam::RealParameter: value = VX_Value(std::stod(text), 0); break;
    case VX_VarParam::LogicalParameter: value = VX_Value(text == "true", 0); break;
    case VX_VarParam::StringSet: {   // members separated by commas
        std::vector<std::string> members;
        for (std::size_t start = 0; start <= text.size();) {
            const auto end = std::min(text.find(',', start), text.size());
            members.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        value = VX_Value(VX_StrSetValue(std::move(members)), 0);
        break;
    }
    default: value = VX_Value(text.c_str(), 0); break;
    }
    std::string why;
    ASSERT_NE(p->AssignUser(VX_ATTR_VALUE, value, &why), VX_AS_REFUSED) << setting << ": " << why;
}

class EveryModel : public ::testing::TestWithParam<VX_CheckCase> {};

TEST_P(EveryModel, JacobianAgreesWithFiniteDifferences) {
    const VX_CheckCase& c = GetParam();
    // Settings of the form option(NAME)=VALUE are options of the component list (a text value),
    // the others settings of the model.
    std::vector<std::string> settings;
    std::map<std::string, SUValue> options;
    const std::string all = c.settings;
    for (std::size_t start = 0; !all.empty() && start <= all.size();) {
        const auto end = std::min(all.find(';', start), all.size());
        const std::string setting = all.substr(start, end - start);
        start = end + 1;
        const auto eq = setting.find('=');
        if (setting.rfind("option(", 0) == 0 && eq != std::string::npos && eq > 8)
            options[setting.substr(7, eq - 8)] = SUValue(setting.substr(eq + 1));
        else
            settings.push_back(setting);
    }
    ScopedSession session;
    session->DefineComponentList("CHECK", {"WATER", "METHANOL", "ETHANOL"}, options);
    std::unique_ptr<VX_ModelType, Released> model(c.make());
    VX_ProtocolDriver driver;
    AddGlobalStructures(driver, *session);
    driver.AddBlock(*model);
    // External references to parameters stand for the flowsheet's globals, as in the host, the
    // others get stand-ins; the settings may then give them values.
    ASSERT_GE(LinkGlobalsAndStandIns(driver), 0) << driver.LastFailure().message;
    // Rounds as a flowsheet applies its values: what exists, then sizes and assignments.
    for (int pass = 0; pass < 4; ++pass) {
        std::vector<std::string> later;
        for (const std::string& setting : settings) {
            bool applied = false;
            ApplySetting(*model, setting, applied);
            if (!applied) later.push_back(setting);
        }
        settings.swap(later);
        ASSERT_GE(driver.SetDims(), 0) << driver.LastFailure().message;
        ASSERT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0) << driver.LastFailure().message;
    }
    ASSERT_TRUE(settings.empty()) << settings.front() << ": " << VX_ResolvePath(*model, settings.front().substr(0, settings.front().find('='))).problem;
    ASSERT_GE(driver.SetUpEquations(), 0) << driver.LastFailure().operation << ": " << driver.LastFailure().message;
    const std::vector<std::string> problems = zx::checks::CheckDriverStructure(driver);
    EXPECT_TRUE(problems.empty()) << problems.front();

    std::mt19937 random(20261123);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    const std::vector<VX_VarParam*> columns = session->Columns();
    std::vector<double> start;
    for (VX_VarParam* v : columns) start.push_back(*v->RealSlot());
    for (int point = 0; point < 3; ++point) {
        for (std::size_t k = 0; k < columns.size(); ++k) {
            auto* v = dynamic_cast<VX_Variable*>(columns[k]);
            if (!v) continue;   // parameters keep the values the model gives them
            const double x = start[k] * (1.0 + 0.4 * u(random)) + 0.5 * u(random);
            // A finite-difference step inside the bounds, so that the differences stay in the
            // model's domain (a mole fraction at its bound 0 would be stepped below it).
            const double lo = v->Lower() + 1e-5 * std::max(1.0, std::fabs(v->Lower()));
            const double hi = v->Upper() - 1e-5 * std::max(1.0, std::fabs(v->Upper()));
            v->SetSolverValue(lo < hi ? std::clamp(x, lo, hi) : std::clamp(x, v->Lower(), v->Upper()));
        }
        const auto result = zx::checks::CheckDriverJacobian(driver);
        EXPECT_FALSE(result.evaluationFailed) << driver.LastFailure().message;
        EXPECT_TRUE(result.ok()) << c.type << " \"" << c.name << "\", point " << point << ": worst entry "
                                 << (result.worst.empty() ? std::string("?")
                                                          : result.worst[0].rowName + " / " + result.worst[0].columnName)
                                 << ", analytic " << (result.worst.empty() ? 0.0 : result.worst[0].analytic) << ", fd "
                                 << (result.worst.empty() ? 0.0 : result.worst[0].finiteDifference);
    }
}

std::string CaseName(const ::testing::TestParamInfo<VX_CheckCase>& info) {
    std::string name = std::string(info.param.type) + "_" + info.param.name;
    for (char& ch : name)
        if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Described, EveryModel, ::testing::ValuesIn(kVX_CheckCases), CaseName);

}  // namespace
