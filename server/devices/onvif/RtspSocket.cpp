#include "server/devices/onvif/RtspSocket.h"

namespace {

thread_local GstPtr<GSocket> lastConnection; // that this thread made, until it is taken

gboolean onSocketEvent(GSignalInvocationHint* /*hint*/, guint count, const GValue* values, gpointer /*data*/)
{
    constexpr guint arguments = 4; // the client, its event, the address, the connection
    if (count == arguments && g_value_get_enum(values + 1) == G_SOCKET_CLIENT_CONNECTED) {
        auto* const connection = g_value_get_object(values + 3);
        if (G_IS_SOCKET_CONNECTION(connection)) {
            GSocket* const socket = g_socket_connection_get_socket(G_SOCKET_CONNECTION(connection));
            lastConnection.reset(G_SOCKET(g_object_ref(socket)));
        }
    }
    return TRUE;
}

} // namespace

void RtspSocket::watch()
{
    static std::once_flag once;
    std::call_once(once, [] {
        g_type_class_ref(G_TYPE_SOCKET_CLIENT); // or it has no signals yet
        g_signal_add_emission_hook(g_signal_lookup("event", G_TYPE_SOCKET_CLIENT), 0, &onSocketEvent, nullptr,
                                   nullptr);
    });
}

void RtspSocket::take()
{
    if (!lastConnection) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_socket = std::move(lastConnection);
    if (m_isCut) {
        g_socket_shutdown(m_socket.get(), TRUE, TRUE, nullptr);
    }
}

void RtspSocket::cut()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isCut = true;
    if (m_socket) {
        g_socket_shutdown(m_socket.get(), TRUE, TRUE, nullptr);
    }
}

std::optional<SocketFlow> RtspSocket::flow() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const int socket = m_socket ? g_socket_get_fd(m_socket.get()) : -1;
    return socket >= 0 ? SocketFlow::of(socket) : std::nullopt;
}
