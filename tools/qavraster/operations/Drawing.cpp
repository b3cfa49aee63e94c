#include <QAVMMIHelperRGBA.h>

#include <algorithm>
#include <cstdint>
#include <sstream>

#include "Errors.h"
#include "operations/Catalogue.h"

namespace qavraster {
namespace {

using Helper = QAVMMIHelperRGBA;
using Words = std::vector<std::string>;

Argument coordinate(std::string name) { return integer(std::move(name), INT32_MIN, INT32_MAX, "pixels"); }

unsigned int wordOf(Colour c) {
  return c.red | static_cast<unsigned>(c.green) << 8 | static_cast<unsigned>(c.blue) << 16 |
         static_cast<unsigned>(c.alpha) << 24;
}

// What may follow the colour.
struct Style {
  unsigned char filled = 0;
  QAVMMIBrush brush = QAVMMIBrushPixel;
};

struct Shape {
  std::string name;
  Words coordinates;
  void (*draw)(Helper& helper, const std::vector<int>& at, unsigned int colour, Style style);
};

const std::vector<Shape>& shapes() {
  static const std::vector<Shape> all = {
      {"line",
       {"X1", "Y1", "X2", "Y2"},
       [](Helper& h, const std::vector<int>& at, unsigned int colour, Style style) {
         h.Line(at[0], at[1], at[2], at[3], colour, style.brush);
       }},
      {"point",
       {"X", "Y"},
       [](Helper& h, const std::vector<int>& at, unsigned int colour, Style style) {
         h.Brush(at[0], at[1], colour, style.brush);
       }},
      {"rect",
       {"X1", "Y1", "X2", "Y2"},
       [](Helper& h, const std::vector<int>& at, unsigned int colour, Style style) {
         h.Rectangle(at[0], at[1], at[2], at[3], colour, style.filled);
       }},
      {"ellipse",
       {"CX", "CY", "RX", "RY"},
       [](Helper& h, const std::vector<int>& at, unsigned int colour, Style style) {
         h.Ellipse(at[0], at[1], at[2], at[3], colour, style.filled);
       }},
      {"circle",
       {"CX", "CY", "R"},
       [](Helper& h, const std::vector<int>& at, unsigned int colour, Style style) {
         h.Circle(at[0], at[1], at[2], colour, style.filled);
       }},
      {"fill",
       {"X", "Y"},
       [](Helper& h, const std::vector<int>& at, unsigned int colour, Style) { h.Fill(at[0], at[1], colour); }},
      {"clear", {}, [](Helper& h, const std::vector<int>&, unsigned int colour, Style) { h.Clear(colour); }},
  };
  return all;
}

Words split(const std::string& text) {
  std::istringstream stream(text);
  Words words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

int coordinateOf(const std::string& name, const std::string& text) {
  return static_cast<int>(std::get<std::int64_t>(parseValue(coordinate(name), text)));
}

// Takes the words after the colour off the end.
Style takeStyle(Words& words) {
  Style style;
  for (; !words.empty(); words.pop_back()) {
    if (words.back() == "filled")
      style.filled = 1;
    else if (words.back().rfind("brush=", 0) == 0)
      style.brush = static_cast<QAVMMIBrush>(
          std::get<std::int64_t>(parseValue(integer("brush", 0, QAVMMIBrushSpray12), words.back().substr(6))));
    else
      break;
  }
  if (words.empty()) throw UsageError("give a colour");
  return style;
}

// The vertices X,Y of one or more polygons with "/" between them.
void drawPolygons(Helper& helper, const Words& words, unsigned int colour) {
  std::vector<int> counts(1), points;
  for (const std::string& word : words) {
    if (word == "/") {
      counts.push_back(0);
      continue;
    }
    const std::size_t comma = word.find(',');
    if (comma == std::string::npos) throw UsageError("polygon: '" + word + "' is not a vertex X,Y");
    points.push_back(coordinateOf("X", word.substr(0, comma)));
    points.push_back(coordinateOf("Y", word.substr(comma + 1)));
    ++counts.back();
  }
  if (*std::min_element(counts.begin(), counts.end()) < 3) throw UsageError("polygon: give 3 vertices X,Y or more");
  helper.FillArea(static_cast<int>(counts.size()), counts.data(), points.data(), colour);
}

void drawShape(Helper& helper, const std::string& name, const Words& words, unsigned int colour, Style style) {
  if (name == "polygon") return drawPolygons(helper, words, colour);
  const auto shape = std::find_if(shapes().begin(), shapes().end(), [&](const Shape& s) { return s.name == name; });
  if (shape == shapes().end()) throw UsageError("'" + name + "' is no shape; see qavraster --list");
  if (words.size() != shape->coordinates.size())
    throw UsageError(name + ": give " + std::to_string(shape->coordinates.size()) + " numbers and a colour");
  std::vector<int> at;
  for (std::size_t i = 0; i < words.size(); ++i) at.push_back(coordinateOf(shape->coordinates[i], words[i]));
  shape->draw(helper, at, colour, style);
}

void makeRGBA(Context& c, QAVPixelImage& image) {
  if (image.GetFormat() != RGBA8888) c.require(image.ConvertToFormat(RGBA8888));
}

void draw(Context& c, const Values& v) {
  Words words = split(v.text(0));
  if (words.size() < 2) throw UsageError("give a shape, its coordinates and a colour");
  const std::string name = words.front();
  words.erase(words.begin());
  const Style style = takeStyle(words);
  const unsigned int colourWord = wordOf(std::get<Colour>(parseValue(colour("COLOUR"), words.back())));
  words.pop_back();
  makeRGBA(c, *c.image);
  Helper helper(*c.image);
  drawShape(helper, name, words, colourWord, style);
}

void blend(Context& c, const Values& v) {
  const std::string& text = v.text(0);
  const std::size_t at = text.rfind('@'), comma = text.rfind(',');
  if (at == std::string::npos || comma == std::string::npos || comma < at)
    throw UsageError("'" + text + "' is not right; give FILE@X,Y");
  const int x = coordinateOf("X", text.substr(at + 1, comma - at - 1)), y = coordinateOf("Y", text.substr(comma + 1));
  const Image source = c.read(text.substr(0, at));
  makeRGBA(c, *source);
  makeRGBA(c, *c.image);
  if (FAILED(Helper(*c.image).Blend(*source, x, y))) c.fail("nothing of the other picture falls inside this one");
}

}  // namespace

Family drawingFamily() {
  return {"Drawing (the picture becomes RGBA)",
          {
              {"draw",
               {text("SHAPE", "shape, coordinates, colour, style")},
               "Draws 'line X1 Y1 X2 Y2', 'point X Y', 'rect X1 Y1 X2 Y2', 'ellipse CX CY RX RY', 'circle CX CY R', "
               "'polygon X,Y X,Y X,Y ...' (several with / between them), 'fill X Y' (the region of one colour) or "
               "'clear', followed by a colour and for lines and points brush=0..12, for rectangles and ellipses "
               "'filled'.",
               draw},
              {"blend",
               {text("FILE@X,Y", "picture and where its top-left pixel goes")},
               "Mixes the other picture in. Its alpha is the weight of what is there already: 0 replaces, 255 keeps.",
               blend},
          }};
}

}  // namespace qavraster
