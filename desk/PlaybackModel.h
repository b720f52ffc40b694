#pragma once

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QTimer>

#include <vector>

class RequestTimeouts;
class PluginClient;

/**
 * What the desk has asked to be played, and how far that has come. Progress and refusals are taken from the
 * host's replies, by their request: the plug-in forwards progress without saying whose it is.
 */
class PlaybackModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

public:
    enum Role
    {
        TitleRole = Qt::UserRole + 1, ///< The file.
        TargetRole,                   ///< Where it plays, by name.
        ProgressRole,                 ///< 0 to 1.
        StateRole,
        ProblemRole, ///< In words, when it failed.
    };

    enum State
    {
        Asked,
        Playing,
        Ended,
        Failed,
    };
    Q_ENUM(State)

    /** @param watch knows the request of the last call */
    PlaybackModel(PluginClient& plugin, const RequestTimeouts& watch);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /** @param length of the file, ms */
    Q_INVOKABLE void play(bool group, int id, const QString& name, int file, const QString& fileName,
                          int length);
    /** Stops what a row plays. */
    Q_INVOKABLE void stop(int row);
    /** Takes a row that has ended out of the list. */
    Q_INVOKABLE void dismiss(int row);

    /** A reply came to the host. @param result with "progress", percent, for a playback that goes on */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request, const QVariant& result);
    /** No answer to a request came in time. */
    void timedOut(quint64 request);
    /** The connection is lost: nobody knows how it goes on. */
    void forget();
    /** Another server follows: no row is of interest any more. */
    void clear();

Q_SIGNALS:
    void countChanged();
    /** The server tells that something could not be played, asked for or not. */
    void failed(const QString& text);

private:
    void playAudioError(const QString& target, const QString& file, const QString& error,
                        const QString& schedule);

    struct Entry
    {
        bool group;
        int id;
        QString name;
        QString fileName;
        int length; ///< ms
        State state = Asked;
        qreal progress = 0;
        QString problem;
        QElapsedTimer since;
        quint64 request = 0;
    };

    void changed(std::size_t row);
    void end(std::size_t row, State state, const QString& problem = QString());
    void tick();

    PluginClient& m_plugin;
    const RequestTimeouts& m_watch;
    std::vector<Entry> m_entries;
    QTimer m_timer; ///< While something plays.
};
