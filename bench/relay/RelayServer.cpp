#include "bench/relay/RelayServer.h"

#include "bench/relay/DeskClient.h"
#include "bench/relay/MumbleClient.h"
#include "server/devices/simulated/SimulatedConfig.h"

#include <sodium.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int looks = 200; // for a server that starts
constexpr std::chrono::milliseconds lookInterval(50);

/** A port that nobody listens at now. */
std::uint16_t freePort()
{
    const int found = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    bind(found, reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(found, reinterpret_cast<sockaddr*>(&address), &size);
    close(found);
    return ntohs(address.sin_port);
}

/** A user whose password takes no time to check, or 200 logins would. */
void writeUser(const std::string& folder)
{
    std::array<char, crypto_pwhash_STRBYTES> hash{};
    if (sodium_init() < 0 ||
        crypto_pwhash_str(hash.data(), DeskClient::password.data(), DeskClient::password.size(),
                          crypto_pwhash_OPSLIMIT_MIN, crypto_pwhash_MEMLIMIT_MIN) != 0) {
        throw std::runtime_error("the password cannot be hashed");
    }
    std::ofstream(folder + "/users") << DeskClient::user << ' ' << hash.data() << '\n';
}

} // namespace

RelayServer::RelayServer(const Kind& kind, const ScratchFolder& folder)
    : m_kind(kind), m_tls(kind.tls ? SSL_CTX_new(TLS_client_method()) : nullptr, SSL_CTX_free)
{
    static unsigned number = 0;
    const std::string own = folder.makeFolder(std::to_string(++number));
    if (m_tls) {
        SSL_CTX_set_mode(m_tls.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    }
    m_kind.protocol == Kind::Desk ? startDesk(own) : startMumble(own);
}

void RelayServer::startDesk(const std::string& folder)
{
    writeUser(folder);
    std::vector<std::string> arguments{m_kind.program, "serve",  "--listen", "127.0.0.1:0",
                                       "--simulate",   "--data", folder};
    if (m_kind.tls) {
        arguments.emplace_back("--tls");
    }
    m_process = std::make_unique<ServerProcess>(arguments,
                                                std::vector<std::string>{"HOME=" + folder,
                                                                         "QT_QPA_PLATFORM=offscreen",
                                                                         "PULSE_SERVER=unix:/nonexistent"},
                                                folder);
    const std::string line = m_process->firstLine();
    const std::size_t colon = line.rfind(':');
    if (colon == std::string::npos) {
        throw std::runtime_error(m_kind.program + " does not serve: " + line);
    }
    m_port = static_cast<std::uint16_t>(std::stoi(line.substr(colon + 1)));
}

void RelayServer::startMumble(const std::string& folder)
{
    m_port = freePort();
    std::ofstream(folder + "/server.ini")
        << "database=" << folder << "/server.sqlite\nlogfile=\npidfile=\nhost=127.0.0.1\nport=" << m_port
        << "\nuname=root\nice=\ndbus=\nbonjour=false\nregisterName=\nallowping=false\nusers=1000\n"
           "usersperchannel=0\nbandwidth=1000000000\nautobanAttempts=0\nautobanTimeframe=0\nautobanTime="
           "0\ntimeout=600\nopusthreshold=0\n";
    m_process = std::make_unique<ServerProcess>(
        std::vector<std::string>{m_kind.program, "-fg", "-ini", folder + "/server.ini"},
        std::vector<std::string>{"HOME=" + folder}, folder);
    for (int i = 0; i < looks && m_process->isRunning(); ++i) {
        try {
            const PeerSocket probe(m_port, nullptr);
            return;
        } catch (const std::runtime_error&) {
            std::this_thread::sleep_for(lookInterval);
        }
    }
    throw std::runtime_error(m_kind.program + " does not listen");
}

std::unique_ptr<RelayClient> RelayServer::makeClient(RelayClient::Listener& listener)
{
    const unsigned number = ++m_clients;
    if (m_kind.protocol == Kind::Desk) {
        return std::make_unique<DeskClient>(m_port, m_tls.get(), listener);
    }
    return std::make_unique<MumbleClient>(m_port, m_tls.get(), listener, number);
}

std::chrono::milliseconds RelayServer::echoDelay() const
{
    return std::chrono::milliseconds(m_kind.protocol == Kind::Desk ? echoingVoice().echoDelay : 0);
}

std::string RelayServer::findMumble()
{
    for (const char* path : {"/usr/sbin/mumble-server", "/usr/bin/mumble-server", "/usr/sbin/murmurd"}) {
        if (access(path, X_OK) == 0) {
            return path;
        }
    }
    return {};
}
