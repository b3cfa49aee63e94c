#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace qavraster {

struct Size {
  int width = 0;
  int height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Colour {
  unsigned char red = 0, green = 0, blue = 0, alpha = 255;
  friend bool operator==(const Colour&, const Colour&) = default;
};

/// One value of an operation: how it is called in the help, what it may be, and in which unit.
/// Made by the functions below.
struct Argument {
  enum class Kind { Number, Integer, Choice, Letters, Size, Colour, File, Text, Numbers };

  Kind kind = Kind::Text;
  std::string name;
  std::string unit;
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();
  std::vector<std::pair<std::string, int>> choices;
};

using Choices = std::vector<std::pair<std::string, int>>;

/// A finite number from `low` to `high`, which may be infinite.
Argument number(std::string name, double low, double high, std::string unit = "");
Argument anyNumber(std::string name, std::string unit = "");
Argument integer(std::string name, std::int64_t low, std::int64_t high, std::string unit = "");
/// One of the named choices; its value is the integer beside the name.
Argument choice(std::string name, Choices choices);
/// Any of the single letters, or one of the longer names; the value is the sum of their bits.
Argument letters(std::string name, Choices choices);
/// WIDTHxHEIGHT, both from 1 to `most`.
Argument size(std::string name, int most = 1 << 20);
/// #RRGGBB, #RRGGBBAA, or a grey level 0..255.
Argument colour(std::string name);
/// Path of a file that the operation reads (Context::read makes it an image).
Argument file(std::string name);
Argument text(std::string name, std::string meaning);
/// `least` to `most` numbers with commas between them.
Argument numbers(std::string name, int least, int most);

/// What the argument may be, as the help says it: "number from -1 to 1".
std::string describe(const Argument& argument);

using Value = std::variant<double, std::int64_t, std::string, Size, Colour, std::vector<double>>;

/// Throws UsageError, saying what would be right, for a text that is no such argument.
Value parseValue(const Argument& argument, const std::string& text);

/// The values of one occurrence on the command line, by position.
class Values {
 public:
  Values() = default;
  /// Throws UsageError, with `owner` named, for a value that is wrong.
  Values(const std::string& owner, const std::vector<Argument>& arguments, const std::vector<std::string>& texts);

  double number(std::size_t i) const { return std::get<double>(values_.at(i)); }
  float real(std::size_t i) const { return static_cast<float>(number(i)); }
  /// Integers, choices and letters.
  int integer(std::size_t i) const { return static_cast<int>(std::get<std::int64_t>(values_.at(i))); }
  /// A choice as the enumeration that it stands for.
  template <class Enumeration>
  Enumeration as(std::size_t i) const {
    return static_cast<Enumeration>(integer(i));
  }
  /// Texts and file names.
  const std::string& text(std::size_t i) const { return std::get<std::string>(values_.at(i)); }
  Size size(std::size_t i) const { return std::get<Size>(values_.at(i)); }
  Colour colour(std::size_t i) const { return std::get<Colour>(values_.at(i)); }
  const std::vector<double>& numbers(std::size_t i) const { return std::get<std::vector<double>>(values_.at(i)); }

 private:
  std::vector<Value> values_;
};

/// The settings in force, by name: what `--channels` and its like have last been given.
using Settings = std::map<std::string, Values>;

}  // namespace qavraster
