#include "onvif/OnvifDiscovery.h"

#include <QUdpSocket>
#include <QUuid>

#include <algorithm>

namespace {

constexpr int maxReadsAtOnce = 64;  // datagrams; then other events have their turn
constexpr int rounds = 3;           // a datagram may get lost
constexpr int repeatInterval = 200; // ms

} // namespace

OnvifDiscovery::OnvifDiscovery(QObject* parent) : QObject(parent)
{
    m_end.setSingleShot(true);
    connect(&m_end, &QTimer::timeout, this, [this] {
        stop();
        Q_EMIT finished();
    });
    m_repeat.setInterval(repeatInterval);
    connect(&m_repeat, &QTimer::timeout, this, [this] {
        sendProbes();
        if (++m_repeats >= rounds) {
            m_repeat.stop();
        }
    });
}

OnvifDiscovery::~OnvifDiscovery() = default;

QList<QNetworkInterface> OnvifDiscovery::usualInterfaces()
{
    constexpr auto needed =
        QNetworkInterface::IsUp | QNetworkInterface::IsRunning | QNetworkInterface::CanMulticast;
    QList<QNetworkInterface> usual;
    const QList<QNetworkInterface> all = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& interface : all) {
        if ((interface.flags() & needed) == needed && !(interface.flags() & QNetworkInterface::IsLoopBack)) {
            usual.append(interface);
        }
    }
    return usual;
}

bool OnvifDiscovery::start(const QList<QNetworkInterface>& interfaces, const Options& options)
{
    stop();
    m_options = options;
    m_found.clear();
    m_indexes.clear();
    m_answers.clear();
    m_dropped = 0;
    m_ids.clear();
    m_probes.clear();
    for (const QString& type : options.types) {
        m_ids.append(QStringLiteral("urn:uuid:") + QUuid::createUuid().toString(QUuid::WithoutBraces));
        m_probes.append(ProbeMessage::probe(m_ids.constLast(), type));
    }
    for (const QNetworkInterface& interface : interfaces) {
        open(interface);
    }
    if (!sendProbes()) {
        stop();
        return false;
    }
    m_repeats = 1;
    m_repeat.start();
    m_end.start(m_options.time);
    return true;
}

void OnvifDiscovery::stop()
{
    m_end.stop();
    m_repeat.stop();
    for (const auto& socket : m_sockets) {
        socket->disconnect(this);
    }
    m_sockets.clear();
}

void OnvifDiscovery::open(const QNetworkInterface& interface)
{
    const QList<QNetworkAddressEntry> entries = interface.addressEntries();
    for (const QNetworkAddressEntry& entry : entries) {
        if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol) {
            continue;
        }
        auto socket = std::make_unique<QUdpSocket>();
        if (!socket->bind(entry.ip(), 0)) {
            continue;
        }
        socket->setMulticastInterface(interface);
        socket->setSocketOption(QAbstractSocket::MulticastTtlOption, 1);
        connect(socket.get(), &QUdpSocket::readyRead, this,
                [this, socket = socket.get(), name = interface.name()] { read(*socket, name); });
        m_sockets.push_back(std::move(socket));
    }
}

bool OnvifDiscovery::sendProbes()
{
    bool sent = false;
    for (const auto& socket : m_sockets) {
        for (const QByteArray& probe : qAsConst(m_probes)) {
            sent = socket->writeDatagram(probe, m_options.group, m_options.port) == probe.size() || sent;
        }
    }
    return sent;
}

void OnvifDiscovery::read(QUdpSocket& socket, const QString& interfaceName)
{
    // One byte more than is read: a longer datagram is cut, and known as too long.
    QByteArray bytes(ProbeMessage::maxAnswerBytes + 1, '\0');
    for (int i = 0; i < maxReadsAtOnce && socket.hasPendingDatagrams(); ++i) {
        QHostAddress sender;
        const qint64 size = socket.readDatagram(bytes.data(), bytes.size(), &sender);
        if (size < 0) {
            return;
        }
        const bool known = m_answers.contains(sender);
        if (size > ProbeMessage::maxAnswerBytes || (!known && m_answers.size() >= maxSenders) ||
            m_answers.value(sender) >= maxAnswersPerSender) {
            ++m_dropped;
            continue;
        }
        ++m_answers[sender];
        for (const auto& match : ProbeMessage::matches(bytes.left(static_cast<int>(size)), m_ids, sender)) {
            take(match, sender, interfaceName);
        }
    }
}

void OnvifDiscovery::take(const ProbeMessage::Match& match, const QHostAddress& sender,
                          const QString& interfaceName)
{
    const bool isNew = !m_indexes.contains(match.endpoint);
    if (isNew && m_found.size() >= maxFound) {
        ++m_dropped;
        return;
    }
    if (isNew) {
        m_indexes.insert(match.endpoint, static_cast<int>(m_found.size()));
        m_found.push_back({match.endpoint,
                           {},
                           {},
                           false,
                           false,
                           match.name,
                           match.hardware,
                           match.location,
                           interfaceName});
    }
    FoundCamera& camera = m_found[static_cast<std::size_t>(m_indexes.value(match.endpoint))];
    camera.isCamera = camera.isCamera || match.isCamera;
    camera.isElsewhere = camera.isElsewhere || match.isElsewhere;
    const QString host = sender.toString();
    if (!camera.senders.contains(host) && camera.senders.size() < maxAddresses) {
        camera.senders.append(host);
    }
    if (!match.address.isEmpty() && !camera.addresses.contains(match.address) &&
        camera.addresses.size() < maxAddresses) {
        camera.addresses.append(match.address);
    }
}
