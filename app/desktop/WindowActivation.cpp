#include "app/desktop/WindowActivation.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace quillet {
namespace {

/// One conversation with the display, about one of our windows.
class X11Window {
public:
    X11Window(xcb_connection_t& display, xcb_window_t window)
        : m_display(display),
          m_window(window),
          m_root(xcb_setup_roots_iterator(xcb_get_setup(&display)).data->root)
    {
    }
    ~X11Window() { xcb_flush(&m_display); }
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    /// `time` is the display's, of what the user did; 0 if it is not known.
    void activate(std::uint32_t time)
    {
        // As a task bar asks: by the user's own wish.
        constexpr std::uint32_t byTheUser = 2;
        xcb_client_message_event_t message = messageOf(32, "_NET_ACTIVE_WINDOW");
        message.data.data32[0] = byTheUser;
        message.data.data32[1] = time;
        send(message, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
    }

    /// Of a start that the desktop shows as going on.
    void endStart(std::string_view startupId)
    {
        std::string text = "remove: ID=\"";
        for (const char letter : startupId) {
            if (letter == '"' || letter == '\\')
                text += '\\';
            text += letter;
        }
        text += "\"";
        text += '\0';
        const char* kind = "_NET_STARTUP_INFO_BEGIN";
        for (std::size_t at = 0; at < text.size();) {
            xcb_client_message_event_t message = messageOf(8, kind);
            const std::size_t count = std::min(text.size() - at, sizeof message.data.data8);
            std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(at), count, message.data.data8);
            send(message, XCB_EVENT_MASK_PROPERTY_CHANGE);
            at += count;
            kind = "_NET_STARTUP_INFO";
        }
    }

private:
    xcb_client_message_event_t messageOf(std::uint8_t format, std::string_view type)
    {
        const auto question = xcb_intern_atom(&m_display, 0, static_cast<std::uint16_t>(type.size()), type.data());
        const std::unique_ptr<xcb_intern_atom_reply_t, void (*)(void*)> atom(
            xcb_intern_atom_reply(&m_display, question, nullptr), std::free);
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = format;
        message.window = m_window;
        message.type = atom ? atom->atom : xcb_atom_t{ XCB_ATOM_NONE };
        return message;
    }
    void send(const xcb_client_message_event_t& message, std::uint32_t to)
    {
        std::array<char, 32> event{};
        static_assert(sizeof message == sizeof event);
        std::copy_n(reinterpret_cast<const char*>(&message), sizeof message, event.begin());
        xcb_send_event(&m_display, 0, m_root, to, event.data());
    }

    xcb_connection_t& m_display;
    xcb_window_t m_window;
    xcb_window_t m_root;
};

/// The identifier ends in "_TIME" and the display's time.
std::uint32_t timeOf(std::string_view startupId)
{
    constexpr std::string_view mark = "_TIME";
    const auto at = startupId.rfind(mark);
    std::uint32_t time = 0;
    if (at != std::string_view::npos)
        std::from_chars(startupId.data() + at + mark.size(), startupId.data() + startupId.size(), time);
    return time;
}

}  // namespace

void bringToFront(QWindow& window, const ActivationProof& proof)
{
    if ((window.windowStates() & Qt::WindowMinimized) != 0)
        window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.raise();
    if (auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        X11Window shown(*x11->connection(), static_cast<xcb_window_t>(window.winId()));
        shown.activate(timeOf(proof.startupId));
        if (!proof.startupId.empty())
            shown.endStart(proof.startupId);
        return;
    }
    // The toolkit takes it from there.
    if (!proof.token.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(proof.token));
    window.requestActivate();
}

}  // namespace quillet
