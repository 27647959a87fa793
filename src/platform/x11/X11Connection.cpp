#include "platform/x11/X11Connection.h"

#include "platform/x11/X11Error.h"

#include <array>
#include <vector>
#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

namespace keldra {
namespace {

Error connectionError(int reason) {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0')
        return x11Error(X11ErrorCode::noDisplay,
                        "There is no X display: set DISPLAY, or start KELDRA from a desktop session.");
    const std::string name = display;
    if (reason == XCB_CONN_CLOSED_PARSE_ERR)
        return x11Error(X11ErrorCode::noDisplay, "\"" + name + "\" is not the name of an X display: correct DISPLAY.");
    if (reason == XCB_CONN_CLOSED_INVALID_SCREEN)
        return x11Error(X11ErrorCode::noDisplay, "The X display " + name + " has no such screen: correct DISPLAY.");
    return x11Error(X11ErrorCode::noDisplay,
                    "The X display " + name +
                        " does not answer: correct DISPLAY, or start KELDRA from a desktop session.");
}

std::string errorName(std::uint8_t code) {
    static constexpr std::array names{"Success",   "BadRequest", "BadValue",         "BadWindow", "BadPixmap",
                                      "BadAtom",   "BadCursor",  "BadFont",          "BadMatch",  "BadDrawable",
                                      "BadAccess", "BadAlloc",   "BadColormap",      "BadGC",     "BadIDChoice",
                                      "BadName",   "BadLength",  "BadImplementation"};
    return code < names.size() ? names[code] : "error " + std::to_string(code);
}

} // namespace

Result<std::shared_ptr<X11Connection>> X11Connection::open() {
    int screenNumber = 0;
    // Owned from here: even a failed connection must be closed.
    std::shared_ptr<X11Connection> connection(new X11Connection(xcb_connect(nullptr, &screenNumber)));
    if (const int reason = xcb_connection_has_error(connection->m_connection); reason != 0)
        return fail(connectionError(reason));

    const xcb_setup_t* setup = xcb_get_setup(connection->m_connection);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    connection->m_screen = screens.data;
    connection->m_clientMask = setup->resource_id_mask;
    connection->m_ownClient = setup->resource_id_base;
    connection->readAtoms(screenNumber);
    connection->readExtensions();
    if (connection->isBroken())
        return fail(connectionError(xcb_connection_has_error(connection->m_connection)));
    return connection;
}

X11Connection::~X11Connection() {
    xcb_disconnect(m_connection);
}

void X11Connection::readAtoms(int screenNumber) {
    const std::vector<std::pair<xcb_atom_t X11Atoms::*, std::string>> wanted{
        {&X11Atoms::clientList, "_NET_CLIENT_LIST"},
        {&X11Atoms::clientListStacking, "_NET_CLIENT_LIST_STACKING"},
        {&X11Atoms::currentDesktop, "_NET_CURRENT_DESKTOP"},
        {&X11Atoms::frameExtents, "_GTK_FRAME_EXTENTS"},
        {&X11Atoms::rootPixmap, "_XROOTPMAP_ID"},
        {&X11Atoms::supportingWindowManager, "_NET_SUPPORTING_WM_CHECK"},
        {&X11Atoms::utf8String, "UTF8_STRING"},
        {&X11Atoms::windowName, "_NET_WM_NAME"},
        {&X11Atoms::windowOpacity, "_NET_WM_WINDOW_OPACITY"},
        {&X11Atoms::windowProcess, "_NET_WM_PID"},
        {&X11Atoms::windowState, "WM_STATE"},
        {&X11Atoms::windowType, "_NET_WM_WINDOW_TYPE"},
        {&X11Atoms::windowTypeDesktop, "_NET_WM_WINDOW_TYPE_DESKTOP"},
        {&X11Atoms::windowTypeDialog, "_NET_WM_WINDOW_TYPE_DIALOG"},
        {&X11Atoms::windowTypeDock, "_NET_WM_WINDOW_TYPE_DOCK"},
        {&X11Atoms::windowTypeMenu, "_NET_WM_WINDOW_TYPE_MENU"},
        {&X11Atoms::windowTypeNormal, "_NET_WM_WINDOW_TYPE_NORMAL"},
        {&X11Atoms::windowTypeNotification, "_NET_WM_WINDOW_TYPE_NOTIFICATION"},
        {&X11Atoms::windowTypeSplash, "_NET_WM_WINDOW_TYPE_SPLASH"},
        {&X11Atoms::windowTypeToolbar, "_NET_WM_WINDOW_TYPE_TOOLBAR"},
        {&X11Atoms::windowTypeUtility, "_NET_WM_WINDOW_TYPE_UTILITY"},
        {&X11Atoms::workArea, "_NET_WORKAREA"},
        {&X11Atoms::compositingManager, "_NET_WM_CM_S" + std::to_string(screenNumber)},
    };
    std::vector<xcb_intern_atom_cookie_t> requests;
    for (const auto& [member, name] : wanted)
        requests.push_back(xcb_intern_atom(m_connection, 0, std::uint16_t(name.size()), name.c_str()));
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (const auto answer = reply(xcb_intern_atom_reply, requests[i]))
            m_atoms.*wanted[i].first = answer->atom;
}

void X11Connection::readExtensions() {
    const std::pair<X11Extensions::Extension*, xcb_extension_t*> wanted[] = {
        {&m_extensions.composite, &xcb_composite_id}, {&m_extensions.damage, &xcb_damage_id},
        {&m_extensions.randr, &xcb_randr_id},         {&m_extensions.render, &xcb_render_id},
        {&m_extensions.resource, &xcb_res_id},        {&m_extensions.shape, &xcb_shape_id},
        {&m_extensions.sharedMemory, &xcb_shm_id},    {&m_extensions.xfixes, &xcb_xfixes_id},
        {&m_extensions.input, &xcb_input_id},
    };
    for (const auto& [extension, id] : wanted)
        xcb_prefetch_extension_data(m_connection, id);
    for (const auto& [extension, id] : wanted)
        if (const auto* data = xcb_get_extension_data(m_connection, id); data != nullptr && data->present)
            *extension = {true, data->first_event, data->major_opcode};

    // A client must ask for the version before it uses these; what is too old for us counts as missing.
    const auto negotiate = [this](X11Extensions::Extension& extension, auto wait, auto ask, unsigned major,
                                  unsigned minor) {
        if (!extension.isPresent)
            return;
        const auto version = reply(wait, ask(m_connection, major, minor));
        const bool isEnough =
            version != nullptr &&
            (version->major_version > major || (version->major_version == major && version->minor_version >= minor));
        extension.isPresent = isEnough;
    };
    negotiate(m_extensions.composite, xcb_composite_query_version_reply, xcb_composite_query_version, 0, 2);
    negotiate(m_extensions.damage, xcb_damage_query_version_reply, xcb_damage_query_version, 1, 1);
    negotiate(m_extensions.randr, xcb_randr_query_version_reply, xcb_randr_query_version, 1, 5);
    negotiate(m_extensions.render, xcb_render_query_version_reply, xcb_render_query_version, 0, 10);
    negotiate(m_extensions.xfixes, xcb_xfixes_query_version_reply, xcb_xfixes_query_version, 3, 0);
    negotiate(m_extensions.input, xcb_input_xi_query_version_reply, xcb_input_xi_query_version, 2, 1);
    if (m_extensions.resource.isPresent) {
        const auto version = reply(xcb_res_query_version_reply, xcb_res_query_version(m_connection, 1, 2));
        m_extensions.resource.isPresent =
            version != nullptr && (version->server_major > 1 || version->server_minor >= 2);
    }
    if (m_extensions.sharedMemory.isPresent) {
        const auto version = reply(xcb_shm_query_version_reply, xcb_shm_query_version(m_connection));
        m_extensions.sharedMemory.isPresent =
            version != nullptr && (version->major_version > 1 || version->minor_version >= 2);
        m_extensions.sharedPixmaps = version != nullptr && version->shared_pixmaps;
    }
}

Result<void> X11Connection::requireStreaming() const {
    const std::pair<bool, const char*> needed[] = {
        {m_extensions.composite.isPresent, "Composite"}, {m_extensions.damage.isPresent, "Damage"},
        {m_extensions.render.isPresent, "Render"},       {m_extensions.sharedMemory.isPresent, "SHM"},
        {m_extensions.xfixes.isPresent, "XFixes"},
    };
    std::string missing;
    for (const auto& [isPresent, name] : needed)
        if (!isPresent)
            missing += (missing.empty() ? "" : ", ") + std::string(name);
    if (missing.empty())
        return {};
    return fail(x11Error(X11ErrorCode::missingExtension, "The X server lacks " + missing + "."));
}

Result<void> X11Connection::check(xcb_void_cookie_t request, std::string_view what) const {
    const XcbPtr<xcb_generic_error_t> error(xcb_request_check(m_connection, request));
    if (isBroken())
        return fail(x11Error(X11ErrorCode::connectionLost, "The X display went away."));
    if (!error)
        return {};
    Error failure = x11Error(X11ErrorCode::requestFailed, std::string(what) + ": " + errorName(error->error_code));
    failure.info["request"] = std::to_string(error->major_code) + "." + std::to_string(error->minor_code);
    failure.info["resource"] = std::to_string(error->resource_id);
    return fail(std::move(failure));
}

void X11Connection::roundTrip() const {
    reply(xcb_get_input_focus_reply, xcb_get_input_focus(m_connection));
}

} // namespace keldra
