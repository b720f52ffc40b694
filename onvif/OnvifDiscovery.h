#pragma once

#include "onvif/ProbeMessage.h"

#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QNetworkInterface>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <vector>

class QUdpSocket;

/** A device that answered a probe. Nothing of it is checked: anybody may answer, with anything. */
struct FoundCamera
{
    QString endpoint;         ///< The device's lasting address, as "urn:uuid:...".
    QList<QUrl> addresses;    ///< Of its device service, each at the host that sent it; may be empty.
    QStringList senders;      ///< The hosts that answered with this endpoint.
    bool isElsewhere = false; ///< Whether an answer named addresses of other hosts only.
    bool isCamera = false;    ///< Whether it calls itself a network video transmitter.
    QString name;             ///< As the device calls itself; as the next two.
    QString hardware;         ///< May be empty.
    QString location;         ///< May be empty.
    QString interfaceName;    ///< Of this machine, on which the first answer came.
};

/**
 * Looks for cameras in the networks of this machine (WS-Discovery 2005/04, ONVIF Core, clause 7), by IPv4.
 *
 *   start ─▶ Probes by multicast, from each interface, three times ─▶ ProbeMatches from anybody ─▶ found
 *                                                              time is over ─▶ finished
 *
 * Answers are bounded in size, in number for each sender and in number altogether; what is beyond that is
 * dropped and counted. No login is involved. Used on the thread that made it.
 */
class OnvifDiscovery : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxFound = 1024;          ///< Devices of one search.
    static constexpr int maxAnswersPerSender = 64; ///< Datagrams of one host that are read.
    static constexpr int maxSenders = 4096;        ///< Hosts whose datagrams are read.
    static constexpr int maxAddresses = 8;         ///< Of one device, and hosts that answer for it.

    /** Where and how long is looked. */
    struct Options
    {
        int time = 3000; ///< Of the whole search, ms.
                         /** That are asked for, one probe each; see ProbeMessage::probe. */
        QStringList types{QStringLiteral("dn:NetworkVideoTransmitter"), QStringLiteral("tds:Device")};
        QHostAddress group{QStringLiteral("239.255.255.250")}; ///< That is asked.
        quint16 port = 3702;                                   ///< At which it listens.
    };

    /** Makes one that does not search yet. */
    explicit OnvifDiscovery(QObject* parent = nullptr);
    ~OnvifDiscovery() override;

    /** Returns the interfaces that are asked by default: those that are up and take multicast, but for the
     * loopback. */
    static QList<QNetworkInterface> usualInterfaces();

    /**
     * Starts a search, and forgets the last one; finished follows.
     *
     * @return false when no probe could be sent on any of the interfaces; finished does not follow then
     */
    bool start(const QList<QNetworkInterface>& interfaces, const Options& options);
    /** The same with the usual options. */
    bool start(const QList<QNetworkInterface>& interfaces) { return start(interfaces, Options()); }

    /** Ends the search early, without finished. */
    void stop();

    /** Returns what was found so far, in the order of the first answers. */
    const std::vector<FoundCamera>& found() const { return m_found; }

    /** Returns the number of answers that were dropped because of a limit. */
    int dropped() const { return m_dropped; }

Q_SIGNALS:
    /** The time is over. */
    void finished();

private:
    void open(const QNetworkInterface& interface);
    bool sendProbes();
    void read(QUdpSocket& socket, const QString& interfaceName);
    void take(const ProbeMessage::Match& match, const QHostAddress& sender, const QString& interfaceName);

    Options m_options;
    QStringList m_ids; ///< Of the probes.
    QList<QByteArray> m_probes;
    QTimer m_end;
    QTimer m_repeat;
    int m_repeats = 0;
    std::vector<std::unique_ptr<QUdpSocket>> m_sockets; ///< One for each address of an interface.
    std::vector<FoundCamera> m_found;
    QHash<QString, int> m_indexes;      ///< Of an endpoint in m_found.
    QHash<QHostAddress, int> m_answers; ///< Datagrams by their senders.
    int m_dropped = 0;
};
