#include "Argument.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "Errors.h"

namespace qavraster {
namespace {

Argument make(Argument::Kind kind, std::string name, std::string unit = "") {
  Argument argument;
  argument.kind = kind;
  argument.name = std::move(name);
  argument.unit = std::move(unit);
  return argument;
}

Argument bounded(Argument argument, double low, double high) {
  argument.low = low;
  argument.high = high;
  return argument;
}

template <class T, class... Base>
std::optional<T> whole(const std::string& text, Base... base) {
  T value{};
  const char* first = text.data();
  const char* last = first + text.size();
  if (text.size() > 1 && *first == '+' && text[1] != '-') ++first;
  const auto [end, error] = std::from_chars(first, last, value, base...);
  if (error != std::errc() || end != last) return std::nullopt;
  return value;
}

std::string shortest(double value) {
  char digits[400];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed).ptr;
  return {digits, end};
}

std::string range(const Argument& argument) {
  if (std::isinf(argument.high)) return std::isinf(argument.low) ? "" : " of at least " + shortest(argument.low);
  return " from " + shortest(argument.low) + " to " + shortest(argument.high);
}

std::string namesOf(const Argument& argument) {
  std::string names;
  for (const auto& [name, value] : argument.choices) names += (names.empty() ? "" : ", ") + name;
  return names;
}

bool within(const Argument& argument, double value) {
  return std::isfinite(value) && value >= argument.low && value <= argument.high;
}

std::optional<double> toNumber(const Argument& argument, const std::string& text) {
  const auto value = whole<double>(text);
  return value && within(argument, *value) ? value : std::nullopt;
}

std::optional<std::int64_t> toInteger(const Argument& argument, const std::string& text) {
  const auto value = whole<std::int64_t>(text);
  return value && within(argument, static_cast<double>(*value)) ? value : std::nullopt;
}

std::optional<std::int64_t> toChoice(const Argument& argument, const std::string& text) {
  for (const auto& [name, value] : argument.choices) {
    if (name == text) return value;
  }
  return std::nullopt;
}

std::optional<std::int64_t> toLetters(const Argument& argument, const std::string& text) {
  if (const auto named = toChoice(argument, text)) return named;
  std::int64_t bits = 0;
  for (const char letter : text) {
    const auto bit = toChoice(argument, std::string(1, letter));
    if (!bit) return std::nullopt;
    bits |= *bit;
  }
  return text.empty() ? std::nullopt : std::optional(bits);
}

std::optional<Size> toSize(const Argument& argument, const std::string& text) {
  const auto cross = text.find('x');
  if (cross == std::string::npos) return std::nullopt;
  const auto width = toInteger(argument, text.substr(0, cross));
  const auto height = toInteger(argument, text.substr(cross + 1));
  if (!width || !height) return std::nullopt;
  return Size{static_cast<int>(*width), static_cast<int>(*height)};
}

std::optional<Colour> toColour(const Argument&, const std::string& text) {
  if (!text.empty() && text[0] == '#' && (text.size() == 7 || text.size() == 9)) {
    const std::string digits = text.substr(1) + (text.size() == 7 ? "ff" : "");
    const auto bits = whole<std::uint32_t>(digits, 16);
    if (!bits) return std::nullopt;
    const auto byte = [&](int shift) { return static_cast<unsigned char>(*bits >> shift); };
    return Colour{byte(24), byte(16), byte(8), byte(0)};
  }
  const auto grey = whole<int>(text);
  if (!grey || *grey < 0 || *grey > 255) return std::nullopt;
  const auto level = static_cast<unsigned char>(*grey);
  return Colour{level, level, level, 255};
}

std::optional<std::vector<double>> toNumbers(const Argument& argument, const std::string& text) {
  std::vector<double> all;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const auto value = whole<double>(text.substr(start, comma - start));
    if (!value || !std::isfinite(*value)) return std::nullopt;
    all.push_back(*value);
    start = comma + 1;
  }
  return within(argument, static_cast<double>(all.size())) ? std::optional(all) : std::nullopt;
}

std::optional<std::string> toText(const Argument&, const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

template <class T>
Value required(const std::optional<T>& value, const Argument& argument, const std::string& text) {
  if (!value) throw UsageError(argument.name + ": '" + text + "' is not right; give " + describe(argument));
  return *value;
}

}  // namespace

Argument number(std::string name, double low, double high, std::string unit) {
  return bounded(make(Argument::Kind::Number, std::move(name), std::move(unit)), low, high);
}

Argument anyNumber(std::string name, std::string unit) {
  return make(Argument::Kind::Number, std::move(name), std::move(unit));
}

Argument integer(std::string name, std::int64_t low, std::int64_t high, std::string unit) {
  return bounded(make(Argument::Kind::Integer, std::move(name), std::move(unit)), static_cast<double>(low),
                 static_cast<double>(high));
}

Argument choice(std::string name, Choices choices) {
  Argument argument = make(Argument::Kind::Choice, std::move(name));
  argument.choices = std::move(choices);
  return argument;
}

Argument letters(std::string name, Choices choices) {
  Argument argument = choice(std::move(name), std::move(choices));
  argument.kind = Argument::Kind::Letters;
  return argument;
}

Argument size(std::string name, int most) { return bounded(make(Argument::Kind::Size, std::move(name)), 1, most); }

Argument colour(std::string name) { return make(Argument::Kind::Colour, std::move(name)); }

Argument file(std::string name) { return make(Argument::Kind::File, std::move(name)); }

Argument text(std::string name, std::string meaning) {
  return make(Argument::Kind::Text, std::move(name), std::move(meaning));
}

Argument numbers(std::string name, int least, int most) {
  return bounded(make(Argument::Kind::Numbers, std::move(name)), least, most);
}

std::string describe(const Argument& argument) {
  const std::string unit = argument.unit.empty() ? "" : " (" + argument.unit + ")";
  switch (argument.kind) {
    case Argument::Kind::Number:
      return "a number" + range(argument) + unit;
    case Argument::Kind::Integer:
      return "an integer" + range(argument) + unit;
    case Argument::Kind::Choice:
      return "one of " + namesOf(argument);
    case Argument::Kind::Letters:
      return "letters or a name out of " + namesOf(argument);
    case Argument::Kind::Size:
      return "WIDTHxHEIGHT, each" + range(argument);
    case Argument::Kind::Colour:
      return "#RRGGBB, #RRGGBBAA or a grey level from 0 to 255";
    case Argument::Kind::File:
      return "a file";
    case Argument::Kind::Numbers:
      if (argument.low == argument.high) return shortest(argument.low) + " numbers with commas between them" + unit;
      return "numbers with commas between them, as many as" + range(argument) + unit;
    case Argument::Kind::Text:
      break;
  }
  return argument.unit.empty() ? "a text" : argument.unit;
}

Value parseValue(const Argument& argument, const std::string& text) {
  const auto checked = [&](const auto& value) { return required(value, argument, text); };
  switch (argument.kind) {
    case Argument::Kind::Number:
      return checked(toNumber(argument, text));
    case Argument::Kind::Integer:
      return checked(toInteger(argument, text));
    case Argument::Kind::Choice:
      return checked(toChoice(argument, text));
    case Argument::Kind::Letters:
      return checked(toLetters(argument, text));
    case Argument::Kind::Size:
      return checked(toSize(argument, text));
    case Argument::Kind::Colour:
      return checked(toColour(argument, text));
    case Argument::Kind::Numbers:
      return checked(toNumbers(argument, text));
    case Argument::Kind::File:
    case Argument::Kind::Text:
      break;
  }
  return checked(toText(argument, text));
}

Values::Values(const std::string& owner, const std::vector<Argument>& arguments,
               const std::vector<std::string>& texts) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    try {
      values_.push_back(parseValue(arguments[i], texts.at(i)));
    } catch (const UsageError& error) {
      throw UsageError(owner + ": " + error.what());
    }
  }
}

}  // namespace qavraster
