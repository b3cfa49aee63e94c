#include "support/Comparison.h"
#include "support/Scenes.h"

#include <cairo.h>

namespace qav::bench {
namespace {

cairo_t* canvas() {
  static cairo_t* const made = [] {
    cairo_t* c = cairo_create(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight));
    cairo_set_antialias(c, CAIRO_ANTIALIAS_NONE);
    cairo_set_operator(c, CAIRO_OPERATOR_SOURCE);
    cairo_set_fill_rule(c, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_line_width(c, 1);
    cairo_set_source_rgb(c, 1, 0.5, 0);
    return c;
  }();
  return made;
}

[[maybe_unused]] const bool added[] = {
    add("fill ellipse", "cairo",
        [] {
          constexpr EllipseScene e;
          cairo_t* const c = canvas();
          cairo_save(c);
          cairo_translate(c, e.cx, e.cy);
          cairo_scale(c, e.rx, e.ry);
          cairo_arc(c, 0, 0, 1, 0, 2 * 3.14159265358979);
          cairo_restore(c);
          cairo_fill(c);
        }),
    add("fill polygon", "cairo",
        [] {
          cairo_t* const c = canvas();
          for (std::size_t i = 0; i < star().size(); i += 2) cairo_line_to(c, star()[i], star()[i + 1]);
          cairo_close_path(c);
          cairo_fill(c);
        }),
};

}  // namespace
}  // namespace qav::bench
