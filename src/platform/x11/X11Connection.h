#pragma once

#include "base/Result.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <xcb/xcb.h>

namespace keldra {

struct XcbFree {
    void operator()(void* memory) const { std::free(memory); }
};
/// A reply, event or error that libxcb gave us to keep.
template <typename T>
using XcbPtr = std::unique_ptr<T, XcbFree>;

/// The atoms that we read or compare.
struct X11Atoms {
    xcb_atom_t clientList;
    xcb_atom_t clientListStacking;
    xcb_atom_t currentDesktop;
    xcb_atom_t frameExtents;
    xcb_atom_t rootPixmap;
    xcb_atom_t supportingWindowManager;
    xcb_atom_t utf8String;
    xcb_atom_t windowName;
    xcb_atom_t windowOpacity;
    xcb_atom_t windowProcess;
    xcb_atom_t windowState;
    xcb_atom_t windowType;
    xcb_atom_t windowTypeDesktop;
    xcb_atom_t windowTypeDialog;
    xcb_atom_t windowTypeDock;
    xcb_atom_t windowTypeMenu;
    xcb_atom_t windowTypeNormal;
    xcb_atom_t windowTypeNotification;
    xcb_atom_t windowTypeSplash;
    xcb_atom_t windowTypeToolbar;
    xcb_atom_t windowTypeUtility;
    xcb_atom_t workArea;
    /// The selection that a compositing manager of our screen owns.
    xcb_atom_t compositingManager;
};

/// Which extensions the server has, and where their events start.
struct X11Extensions {
    struct Extension {
        bool isPresent = false;
        std::uint8_t firstEvent = 0;
        std::uint8_t majorOpcode = 0;
        /// Whether that event is the extension's own number `offset`.
        bool isEvent(const xcb_generic_event_t& event, int offset) const {
            return isPresent && (event.response_type & 0x7f) == firstEvent + offset;
        }
    };
    Extension composite;
    Extension damage;
    Extension input;
    Extension randr;
    Extension render;
    Extension resource;
    Extension shape;
    Extension sharedMemory;
    Extension xfixes;
    /// Whether pictures can live in memory that the server and we share.
    bool sharedPixmaps = false;
};

/// One connection to the X display that DISPLAY names. Any thread, as libxcb; events belong to one reader.
class X11Connection {
public:
    /// Errors: one line that says what to do.
    static Result<std::shared_ptr<X11Connection>> open();
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* raw() const { return m_connection; }
    const xcb_screen_t& screen() const { return *m_screen; }
    xcb_window_t root() const { return m_screen->root; }
    const X11Atoms& atoms() const { return m_atoms; }
    const X11Extensions& extensions() const { return m_extensions; }
    /// Whether pictures can be taken as they change; the error names what is missing.
    Result<void> requireStreaming() const;
    /// The part of a resource's id that all resources of its client share.
    std::uint32_t clientOf(std::uint32_t resource) const { return resource & ~m_clientMask; }
    std::uint32_t ownClient() const { return m_ownClient; }
    std::uint32_t newID() const { return xcb_generate_id(m_connection); }
    bool isBroken() const { return xcb_connection_has_error(m_connection) != 0; }

    /// Waits for a reply: connection.reply(xcb_get_geometry_reply, xcb_get_geometry(...)); null when the request
    /// failed.
    template <typename Reply, typename Cookie>
    XcbPtr<Reply> reply(Reply* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) const {
        return XcbPtr<Reply>(wait(m_connection, cookie, nullptr));
    }
    /// Waits until a request of the "checked" kind has been carried out.
    Result<void> check(xcb_void_cookie_t request, std::string_view what) const;
    /// Returns when the server has carried out everything asked so far.
    void roundTrip() const;

private:
    explicit X11Connection(xcb_connection_t* connection) : m_connection(connection) {}
    void readAtoms(int screenNumber);
    void readExtensions();

    xcb_connection_t* m_connection;
    const xcb_screen_t* m_screen = nullptr;
    std::uint32_t m_clientMask = 0;
    std::uint32_t m_ownClient = 0;
    X11Atoms m_atoms{};
    X11Extensions m_extensions;
};

} // namespace keldra
