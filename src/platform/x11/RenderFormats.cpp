#include "platform/x11/RenderFormats.h"

#include <xcb/xcb_renderutil.h>

namespace keldra {

RenderFormats::RenderFormats(const X11Connection& connection) {
    const auto formats =
        connection.reply(xcb_render_query_pict_formats_reply, xcb_render_query_pict_formats(connection.raw()));
    if (!formats)
        return;
    if (const auto* standard = xcb_render_util_find_standard_format(formats.get(), XCB_PICT_STANDARD_ARGB_32))
        m_argb32 = standard->id;
    std::map<xcb_render_pictformat_t, bool> hasAlpha;
    for (auto each = xcb_render_query_pict_formats_formats_iterator(formats.get()); each.rem > 0;
         xcb_render_pictforminfo_next(&each))
        hasAlpha[each.data->id] = each.data->direct.alpha_mask != 0;
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(formats.get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen))
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth))
            for (auto visual = xcb_render_pictdepth_visuals_iterator(depth.data); visual.rem > 0;
                 xcb_render_pictvisual_next(&visual))
                m_visuals[visual.data->visual] = {visual.data->format, hasAlpha[visual.data->format]};
}

RenderFormats::Format RenderFormats::ofVisual(xcb_visualid_t visual) const {
    const auto found = m_visuals.find(visual);
    return found == m_visuals.end() ? Format{} : found->second;
}

} // namespace keldra
