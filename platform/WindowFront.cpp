// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WindowFront.h"

#include <QApplication>
#include <QWidget>

#include "platform/ActivationToken.h"

#if QT_CONFIG(xcb)
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

constexpr std::uint32_t fromUser = 2;  // a program's own wish is 1, which a window manager may turn down

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/**
 * Qt tells the window manager when our program last had a key or a click, which is long ago when the user has
 * clicked at a panel or started the program again: then window managers that guard the focus only make the task
 * bar blink.
 */
void activateForUser(const QWidget& window) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* connection = x11 != nullptr ? x11->connection() : nullptr;
    if (connection == nullptr) {  // Qt's offscreen platform has the interface, but no server behind it
        return;
    }
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = static_cast<xcb_window_t>(window.winId());
    message.type = atom(connection, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = fromUser;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_send_event(connection, 0, root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection);
}

}  // namespace
#else
namespace {

void activateForUser(const QWidget&) {}

}  // namespace
#endif

void WindowFront::orderFrontRegardless(QWidget& window) {
    QWidget* modal = QApplication::activeModalWidget();
    QWidget& active =
        modal != nullptr ? *modal : window;  // a sheet keeps the keyboard from all windows below
    if (&active != &window && window.isMinimized()) {
        window
            .hide();  // some window managers leave a window minimized whose sheet is not, but none a new one
    }
    for (QWidget* each : {&window, &active}) {
        each->setWindowState(each->windowState() & ~Qt::WindowMinimized);
        if (!each->isVisible()) {
            each->move(each->pos());  // said, or the window manager chooses another place
        }
        each->show();
        each->raise();
    }
    active.activateWindow();
    activateForUser(active);
    ActivationToken::take();  // used up, or of no use here
}
