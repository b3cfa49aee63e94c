#include "Argument.h"

#include "Errors.h"
#include "Suggestion.h"
#include "support/Test.h"

namespace qavraster {
namespace {

// Nothing for a text that is refused.
std::optional<Value> parsed(const Argument& argument, const std::string& text) {
  try {
    return parseValue(argument, text);
  } catch (const UsageError& error) {
    EXPECT_NE(std::string(error.what()).find(describe(argument)), std::string::npos);
    return std::nullopt;
  }
}

TEST(Arguments, AreReadWhollyOrRefused) {
  struct Case {
    Argument argument;
    std::vector<std::pair<const char*, Value>> accepted;
    std::vector<const char*> refused;
  };
  const Argument channels = letters("C", {{"r", 2}, {"g", 4}, {"a", 16}, {"all", 31}});
  using Doubles = std::vector<double>;
  const Case cases[] = {
      {number("N", -1, 1),
       {{"-1", -1.0}, {"+.5", 0.5}, {"1e-1", 0.1}},
       {"", "+", "+-1", "1.01", "-1.0001", "inf", "nan", "0,5", "1 ", " 1", "0x1", "0.1x", "1e999"}},
      {anyNumber("N"), {{"-1e30", -1e30}}, {"inf", "-inf", "nan"}},
      {number("N", 0, HUGE_VAL), {{"1e300", 1e300}}, {"inf", "-1e-9", "nan"}},
      {integer("I", -3, 255), {{"-3", -3}, {"+255", 255}}, {"256", "-4", "1.0", "1e2", "99999999999999999999", ""}},
      {choice("C", {{"box", 0}, {"gauss", 8}}), {{"box", 0}, {"gauss", 8}}, {"Box", "bo", "", "8"}},
      {channels, {{"r", 2}, {"agr", 22}, {"rr", 2}, {"all", 31}}, {"", "x", "rx", "allr"}},
      {size("S", 100),
       {{"1x100", Size{1, 100}}, {"20x3", Size{20, 3}}},
       {"0x1", "1x101", "1", "1x", "x1", "1x2x3", "1X2", "-1x2"}},
      {colour("C"),
       {{"#0a0B0c", Colour{10, 11, 12}},
        {"#01020304", Colour{1, 2, 3, 4}},
        {"0", Colour{}},
        {"255", Colour{255, 255, 255}}},
       {"", "#", "#12345", "#1234567", "#12345g", "#-12345", "256", "-1", "red"}},
      {numbers("N", 2, 3),
       {{"1,-2", Doubles{1, -2}}, {"1,2,3", Doubles{1, 2, 3}}},
       {"", "1", "1,2,3,4", "1,,2", "1,2,", ",1,2", "1,nan"}},
      {file("F"), {{"a b", "a b"}}, {""}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(describe(each.argument));
    for (const auto& [text, value] : each.accepted) EXPECT_EQ(parsed(each.argument, text), value) << text;
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
