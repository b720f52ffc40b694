#include "bench/relay/PeerSocket.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int answerTime = 10'000; // ms

void waitUntilReadable(int socket, short events = POLLIN)
{
    pollfd waited{socket, events, 0};
    if (poll(&waited, 1, answerTime) != 1) {
        throw std::runtime_error("the server does not answer");
    }
}

} // namespace

PeerSocket::PeerSocket(std::uint16_t port, SSL_CTX* tls)
    : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1;
    if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)) != 0 ||
        fcntl(m_socket, F_SETFL, O_NONBLOCK) != 0) {
        close(m_socket);
        throw std::runtime_error("no connection");
    }
    if (tls != nullptr) {
        secure(tls);
    }
}

PeerSocket::~PeerSocket()
{
    m_tls.reset();
    close(m_socket);
}

void PeerSocket::secure(SSL_CTX* tls)
{
    m_tls.reset(SSL_new(tls));
    SSL_set_fd(m_tls.get(), m_socket);
    for (;;) {
        const int done = SSL_connect(m_tls.get());
        if (done == 1) {
            return;
        }
        switch (SSL_get_error(m_tls.get(), done)) {
        case SSL_ERROR_WANT_READ:
            waitUntilReadable(m_socket);
            break;
        case SSL_ERROR_WANT_WRITE:
            waitUntilReadable(m_socket, POLLOUT);
            break;
        default:
            throw std::runtime_error("no TLS");
        }
    }
}

std::size_t PeerSocket::readSome(char* to, std::size_t size)
{
    if (m_tls) {
        std::size_t bytes = 0;
        if (SSL_read_ex(m_tls.get(), to, size, &bytes) == 1) {
            return bytes;
        }
        if (SSL_get_error(m_tls.get(), 0) == SSL_ERROR_WANT_READ) {
            return 0;
        }
    } else {
        const ssize_t bytes = recv(m_socket, to, size, 0);
        if (bytes > 0) {
            return static_cast<std::size_t>(bytes);
        }
        if (bytes < 0 && errno == EAGAIN) {
            return 0;
        }
    }
    throw std::runtime_error("the server closed a connection");
}

std::size_t PeerSocket::writeSome(std::string_view bytes)
{
    if (m_tls) {
        std::size_t written = 0;
        if (SSL_write_ex(m_tls.get(), bytes.data(), bytes.size(), &written) == 1) {
            return written;
        }
        if (SSL_get_error(m_tls.get(), 0) == SSL_ERROR_WANT_WRITE) {
            return 0;
        }
    } else {
        const ssize_t written = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (written >= 0) {
            return static_cast<std::size_t>(written);
        }
        if (errno == EAGAIN) {
            return 0;
        }
    }
    throw std::runtime_error("the server closed a connection");
}

void PeerSocket::send(std::string_view bytes)
{
    m_out += bytes;
    flush();
}

void PeerSocket::flush()
{
    while (unsent() != 0) {
        const std::size_t written = writeSome(std::string_view(m_out).substr(m_sent));
        if (written == 0) {
            return;
        }
        m_sent += written;
    }
    m_out.clear();
    m_sent = 0;
}

void PeerSocket::receive()
{
    static std::array<char, 64 << 10> buffer;
    std::size_t bytes = 0;
    do {
        bytes = readSome(buffer.data(), buffer.size());
        m_in.append(buffer.data(), bytes);
    } while (bytes == buffer.size() || (m_tls && bytes != 0)); // OpenSSL gives a record at a time
}

void PeerSocket::waitAndReceive()
{
    flush();
    waitUntilReadable(m_socket);
    receive();
}

void PeerSocket::take(std::size_t bytes)
{
    m_taken += bytes;
    if (m_taken == m_in.size()) {
        m_in.clear();
        m_taken = 0;
    } else if (m_taken > (1U << 20U)) {
        m_in.erase(0, m_taken);
        m_taken = 0;
    }
}
