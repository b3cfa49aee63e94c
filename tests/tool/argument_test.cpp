#include "Argument.h"

#include "Errors.h"
#include "Suggestion.h"
#include "support/Test.h"

namespace qavraster {
namespace {

// The value as a text that is easy to compare; nothing for a text that is refused.
std::optional<std::string> parsed(const Argument& argument, const std::string& text) {
  struct Printer {
    std::string operator()(double v) const { return std::to_string(v); }
    std::string operator()(std::int64_t v) const { return std::to_string(v); }
    std::string operator()(const std::string& v) const { return v; }
    std::string operator()(Size v) const { return std::to_string(v.width) + "," + std::to_string(v.height); }
    std::string operator()(Colour v) const {
      std::string all;
      for (const int channel : {v.red, v.green, v.blue, v.alpha}) all += std::to_string(channel) + " ";
      return all;
    }
    std::string operator()(const std::vector<double>& v) const {
      std::string all;
      for (const double each : v) all += (*this)(each) + " ";
      return all;
    }
  };
  try {
    return std::visit(Printer{}, parseValue(argument, text));
  } catch (const UsageError& error) {
    EXPECT_NE(std::string(error.what()).find(describe(argument)), std::string::npos);
    return std::nullopt;
  }
}

TEST(Arguments, AreReadWhollyOrRefused) {
  struct Case {
    Argument argument;
    std::vector<std::pair<const char*, const char*>> accepted;
    std::vector<const char*> refused;
  };
  const Argument channels = letters("C", {{"r", 2}, {"g", 4}, {"a", 16}, {"all", 31}});
  const Case cases[] = {
      {number("N", -1, 1),
       {{"-1", "-1.000000"}, {"+.5", "0.500000"}, {"1e-1", "0.100000"}},
       {"", "+", "+-1", "1.01", "-1.0001", "inf", "nan", "0,5", "1 ", " 1", "0x1", "1e999"}},
      {anyNumber("N"), {{"-1e30", nullptr}}, {"inf", "-inf", "nan"}},
      {number("N", 0, HUGE_VAL), {{"1e300", nullptr}}, {"inf", "-1e-9", "nan"}},
      {integer("I", -3, 255), {{"-3", "-3"}, {"+255", "255"}}, {"256", "-4", "1.0", "1e2", "99999999999999999999", ""}},
      {choice("C", {{"box", 0}, {"gauss", 8}}), {{"box", "0"}, {"gauss", "8"}}, {"Box", "bo", "", "8"}},
      {channels, {{"r", "2"}, {"agr", "22"}, {"rr", "2"}, {"all", "31"}}, {"", "x", "rx", "allr"}},
      {size("S", 100),
       {{"1x100", "1,100"}, {"20x3", "20,3"}},
       {"0x1", "1x101", "1", "1x", "x1", "1x2x3", "1X2", "-1x2"}},
      {colour("C"),
       {{"#0a0B0c", "10 11 12 255 "}, {"#01020304", "1 2 3 4 "}, {"0", "0 0 0 255 "}, {"255", "255 255 255 255 "}},
       {"", "#", "#12345", "#1234567", "#12345g", "#-12345", "256", "-1", "red"}},
      {numbers("N", 2, 3),
       {{"1,-2", "1.000000 -2.000000 "}, {"1,2,3", "1.000000 2.000000 3.000000 "}},
       {"", "1", "1,2,3,4", "1,,2", "1,2,", ",1,2", "1,nan"}},
      {file("F"), {{"a b", "a b"}}, {""}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(describe(each.argument));
    for (const auto& [text, value] : each.accepted) {
      const auto result = parsed(each.argument, text);
      ASSERT_TRUE(result.has_value()) << text;
      if (value) {
        EXPECT_EQ(*result, value) << text;
      }
    }
    for (const char* text : each.refused) EXPECT_FALSE(parsed(each.argument, text).has_value()) << "'" << text << "'";
  }
}

TEST(Arguments, AreDescribedBriefly) {
  EXPECT_EQ(describe(number("N", -0.5, 3, "pixels")), "a number from -0.5 to 3 (pixels)");
  EXPECT_EQ(describe(number("N", 0, HUGE_VAL)), "a number of at least 0");
  EXPECT_EQ(describe(anyNumber("N")), "a number");
}

TEST(Suggestions, NameTheClosestOptionThatIsClose) {
  const std::vector<std::string> known = {"--gamma", "--negative", "--posterize"};
  EXPECT_NE(suggestion("--posterise", known).find("--posterize?"), std::string::npos);
  EXPECT_NE(suggestion("--gama", known).find("--gamma?"), std::string::npos);
  EXPECT_EQ(suggestion("--sepia-tone", known).find("did you mean"), std::string::npos);
  EXPECT_EQ(suggestion("", {}).find("did you mean"), std::string::npos);
}

}  // namespace
}  // namespace qavraster
