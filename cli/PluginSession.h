#pragma once

#include "client/ExitStatus.h"
#include "client/PluginHost.h"
#include "embedded/ClientOptions.h"

#include <QEventLoop>
#include <QObject>
#include <QVariantList>

#include <functional>
#include <memory>

class QAbstractItemModel;

/** An answer of the plug-in, as one of its response signals. */
struct PluginResponse
{
    QString name; ///< Of the signal.
    QVariantList arguments;
};

/**
 * A plug-in with a server behind it, for commands that ask one thing after another and wait for each answer.
 * Everything goes through the plug-in's invokables, properties, models and signals.
 */
class PluginSession : public QObject
{
    Q_OBJECT

public:
    explicit PluginSession(ClientOptions options);
    ~PluginSession() override;

    /** Loads the plug-in and waits for the server; ExitSuccess, or what to end with after a message. */
    ExitStatus open();

    QObject* plugin() const { return m_host.plugin(); }
    PluginHost& host() { return m_host; }
    const ClientOptions& options() const { return m_options; }

    /** Waits until a response signal of this name has come since the last take; empty after the time-out. */
    std::optional<PluginResponse> waitFor(const char* signalName, int timeout = 0);

    /** A response signal of this name that has come already; serves events first. */
    std::optional<PluginResponse> takeNow(const char* signalName);

    /** Waits until a reply to a command has come, its return code; empty after the time-out. */
    QString waitForReply(const QString& command, int timeout = 0);

    /** The error text of the last reply that was no success. */
    QString errorText() const { return m_errorText; }

    /** Forgets the answers that have come. */
    void forget();

    /** A model of the plug-in, sorted; owned by the session. @param getter an invokable */
    QAbstractItemModel* model(const char* getter);

    static int fail(ExitStatus status, const QString& message);

private Q_SLOTS:
    void response(bool success, const QString& returnCode, int id);
    void talkResponse(bool success, const QString& error, int id);
    void playResponse(bool success, int progress, const QString& error, int id);
    void playError(const QString& device, const QString& file, const QString& error, const QString& alarm);
    void plain();

private:
    bool wait(const std::function<bool()>& condition, int timeout);
    void keep(const QVariantList& arguments);

    ClientOptions m_options;
    std::unique_ptr<ServerLink> m_link;
    PluginHost m_host;
    bool m_connected = false;
    QString m_lost; ///< Why there is no connection, finally.
    QString m_errorText;
    QList<PluginResponse> m_responses;
    QList<QPair<QString, QString>> m_replies; ///< Command and return code.
};
