// Values with units converted to the base units of the library's types and back: every type
// finds its quantity, every unit it accepts round-trips, temperatures keep their zeros apart
// from temperature differences, and units that do not fit are refused with what would.
#include <gtest/gtest.h>

#include <cmath>

#include "type_rows.hpp"
#include "zorexp/units.hpp"

namespace {

using vx_units::Measure;

Measure Of(const char* typeName) {
    for (const auto& t : TypeUnits())
        if (t.name == typeName) return vx_units::MeasureOf(t.row, t.col, t.quantity, t.unit);
    ADD_FAILURE() << "no type " << typeName;
    return {};
}

// Types whose quantity the table does not convert: they take their own base unit only.
bool OwnUnitOnly(const std::string& name) { return name == "PRESS_DROP_COEFF" || name == "PRESS_DROP_COEFF2"; }

TEST(UnitConversion, EveryTypeWithAUnitFindsItsQuantityAndEveryUnitRoundTrips) {
    int families = 0;
    for (const auto& t : TypeUnits()) {
        SCOPED_TRACE(t.name + " (" + t.quantity + ", " + t.unit + ")");
        const Measure m = vx_units::MeasureOf(t.row, t.col, t.quantity, t.unit);
        if (t.unit.empty()) {
            EXPECT_EQ(m.family, nullptr);
            EXPECT_TRUE(vx_units::AcceptedUnits(m).empty());
            continue;
        }
        if (OwnUnitOnly(t.name)) {
            EXPECT_EQ(m.family, nullptr);
            EXPECT_EQ(vx_units::AcceptedUnits(m), std::vector<std::string_view>{t.unit});
            continue;
        }
        ASSERT_NE(m.family, nullptr);
        ++families;
        for (std::string_view unit : vx_units::AcceptedUnits(m)) {
            SCOPED_TRACE(std::string(unit));
            for (double x : {-40.0, 0.0, 123.456, 1e9}) {
                const double base = vx_units::ToBase(m, x, unit);
                EXPECT_NEAR(vx_units::FromBase(m, base, unit), x, 1e-12 * std::max(1.0, std::fabs(x)));
            }
        }
        // The base unit itself changes nothing.
        EXPECT_EQ(vx_units::ToBase(m, 2.5, t.unit), 2.5);
        EXPECT_EQ(vx_units::ToBase(m, 2.5, ""), 2.5);
    }
    EXPECT_GT(families, 150);
}

TEST(UnitConversion, AnObjectOfATypeMeasuresWhatItsRowSays) {
    for (const auto& r : VariableRows()) {
        if (r.name != "TEMP_RISE" && r.name != "FLOW_MOL_VAP_REV" && r.name != "NOTYPE") continue;
        const Measure m = vx_units::MeasureOf(*r.make());
        const Measure expected = Of(r.name.c_str());
        EXPECT_EQ(m.family, expected.family) << r.name;
        EXPECT_EQ(m.baseUnit, expected.baseUnit) << r.name;
    }
}

TEST(UnitConversion, TemperaturesHaveZerosAndDifferencesDoNot) {
    const Measure celsius = Of("TEMPERATURE"), kelvin = Of("TEMPERATURE_ABS"), difference = Of("TEMP_DIFF");
    EXPECT_NEAR(vx_units::ToBase(celsius, 300.0, "K"), 26.85, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(celsius, 212.0, "F"), 100.0, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(celsius, -40.0, "°F"), -40.0, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(celsius, 491.67, "R"), 0.0, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(kelvin, 25.0, "degC"), 298.15, 1e-12);
    EXPECT_NEAR(vx_units::FromBase(kelvin, 0.0, "F"), -459.67, 1e-12);
    // A difference of 18 F is 10 C and 10 K, whatever the zeros.
    EXPECT_NEAR(vx_units::ToBase(difference, 18.0, "F"), 10.0, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(difference, 10.0, "K"), 10.0, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(difference, 10.0, "delta_degC"), 10.0, 1e-12);
    // An interval is not a temperature.
    EXPECT_THROW(vx_units::ToBase(celsius, 10.0, "delta_degC"), vx_units::UnitError);
    // AbsoluteTemperature shares its units-table row, and so its family, with Temperature; a
    // difference has a family of its own.
    EXPECT_EQ(kelvin.family, celsius.family);
    EXPECT_NE(difference.family, celsius.family);
}

TEST(UnitConversion, OtherFamiliesConvertThroughTheirReference) {
    EXPECT_NEAR(vx_units::ToBase(Of("PRESSURE"), 14.6959487755, "psi"), 1.01325, 1e-10);   // bar
    EXPECT_NEAR(vx_units::ToBase(Of("FLOW_MOL"), 1.0, "kmol/s"), 3600.0, 1e-9);            // kmol/hr
    EXPECT_NEAR(vx_units::ToBase(Of("ENTHFLOW_SMALL"), 1.0, "GJ/hr"), 1e9 / 3600.0, 1e-6); // W, a HeatFlowSmall
    EXPECT_NEAR(vx_units::ToBase(Of("MOLEFRACTION"), 25.0, "%"), 0.25, 1e-15);
    EXPECT_NEAR(vx_units::ToBase(Of("PERCENT"), 0.25, "kmol/kmol"), 25.0, 1e-12);
    EXPECT_NEAR(vx_units::ToBase(Of("VEL_ANGULAR"), 2.0 * M_PI, "rad/s"), 60.0, 1e-12);    // rpm
    EXPECT_NEAR(vx_units::ToBase(Of("MOLWEIGHT"), 18.0, "g/mol"), 18.0, 1e-12);            // no units-table row
}

TEST(UnitConversion, UnitsThatDoNotFitAreRefusedWithWhatWould) {
    std::string problem;
    EXPECT_FALSE(vx_units::ToBase(Of("TEMPERATURE"), "psi", &problem));
    EXPECT_NE(problem.find("\"psi\" does not fit Temperature"), std::string::npos) << problem;
    EXPECT_NE(problem.find("K, C, °C"), std::string::npos) << problem;
    // Case matters: "k" is not a kelvin, "MM" not a millimetre.
    EXPECT_FALSE(vx_units::ToBase(Of("TEMPERATURE_ABS"), "k", &problem));
    EXPECT_NE(problem.find("AbsoluteTemperature"), std::string::npos) << problem;
    EXPECT_FALSE(vx_units::ToBase(Of("LENGTH_SHORT"), "MM", &problem));
    EXPECT_FALSE(vx_units::ToBase(Of("NOTYPE"), "K", &problem));
    EXPECT_NE(problem.find("takes no unit"), std::string::npos) << problem;
    EXPECT_FALSE(vx_units::ToBase(Of("PRESS_DROP_COEFF"), "bar", &problem));
    EXPECT_NE(problem.find("accepts m1.5 kg0.5/hr/bar0.5"), std::string::npos) << problem;
    EXPECT_TRUE(vx_units::ToBase(Of("PRESS_DROP_COEFF"), "m1.5 kg0.5/hr/bar0.5", &problem));
    try {
        vx_units::FromBase(Of("PRESSURE"), 1.0, "K");
        ADD_FAILURE() << "no UnitError";
    } catch (const vx_units::UnitError& e) {
        EXPECT_NE(std::string(e.what()).find("Pressure (it accepts Pa,"), std::string::npos) << e.what();
    }
}

TEST(UnitConversion, QuantityTextsSplitIntoNumberAndUnit) {
    struct Case {
        const char* text;
        bool ok;
        double value;
        const char* unit;
    };
    const Case cases[] = {
        {"300 K", true, 300.0, "K"},          {"300K", true, 300.0, "K"},
        {"  -1.5e2   °C ", true, -150.0, "°C"}, {"+5 bar", true, 5.0, "bar"},
        {"7", true, 7.0, ""},                 {"2.5 kg m2", true, 2.5, "kg m2"},
        {"K", false, 0, ""},                  {"", false, 0, ""},
        {"+-3 K", false, 0, ""},              {"1e999 K", false, 0, ""},
        {". K", false, 0, ""},                {"inf K", false, 0, ""},
        {"nan", false, 0, ""},
    };
    for (const Case& c : cases) {
        double value = 0.0;
        std::string_view unit;
        EXPECT_EQ(vx_units::SplitQuantity(c.text, value, unit), c.ok) << c.text;
        if (!c.ok) continue;
        EXPECT_EQ(value, c.value) << c.text;
        EXPECT_EQ(unit, c.unit) << c.text;
    }
}

}  // namespace
