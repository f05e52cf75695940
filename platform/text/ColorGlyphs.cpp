#include "platform/text/ColorGlyphs.h"

#include <hb-ot.h>
#include <pango/pango.h>

namespace platform {

bool hasColorGlyphs(PangoFont* font) {
    hb_face_t* face = hb_font_get_face(pango_font_get_hb_font(font));
    return hb_ot_color_has_png(face) || hb_ot_color_has_layers(face) || hb_ot_color_has_svg(face);
}

}  // namespace platform
