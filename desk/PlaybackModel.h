#pragma once

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QTimer>

#include <vector>

class RequestTimeouts;
class PluginClient;

/**
 * What the desk has asked to be played, and how far that has come. Progress, refusals and ends are taken from
 * the host's replies, by their request: the plug-in forwards progress without its request. A row ends by a
 * reply to its request, or with the connection. Used on the window's thread.
 *
 *   Asked --> Playing --> Ended | Failed | Stopped
 *     '----------'------> Unanswered, until a late reply
 */
class PlaybackModel : public QAbstractListModel
{
    Q_OBJECT
    /** The number of rows. */
    Q_PROPERTY(int count READ rowCount NOTIFY countChanged)

public:
    /** The fields of a row. */
    enum Role
    {
        TitleRole = Qt::UserRole + 1, ///< The file.
        TargetRole,                   ///< Where it plays, by name.
        ProgressRole,                 ///< 0 to 1.
        StateRole,                    ///< See State.
        ProblemRole,                  ///< In words, when it failed.
    };

    /** How a playback is. */
    enum State
    {
        Asked,      ///< The server has not answered yet.
        Playing,    ///< The server reports progress.
        Ended,      ///< Played to the end.
        Failed,     ///< Refused, or broken off by an error.
        Stopped,    ///< Stopped, or displaced by another playback.
        Unanswered, ///< The server reports nothing any more: it may play or not.
    };
    Q_ENUM(State)

    /**
     * @param watch knows the request of the last call
     * @param patience how long the server may report nothing about a file beyond the file's length, ms
     */
    PlaybackModel(PluginClient& plugin, const RequestTimeouts& watch, int patience = 60000);

    /** Returns the number of rows; 0 for the children of a row. */
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    /** Returns a field of a row, see Role; invalid for other roles and rows. */
    QVariant data(const QModelIndex& index, int role) const override;
    /** Returns the names of the fields for QML. */
    QHash<int, QByteArray> roleNames() const override;

    /**
     * Asks the server to play a file, in a new row. Rows of the same target that have ended are removed.
     *
     * @param group whether id is a group's; a speaker's otherwise
     * @param name of the speaker or group
     * @param length of the file, ms; 0 or less when it is not known
     */
    Q_INVOKABLE void play(bool group, int id, const QString& name, int file, const QString& fileName,
                          int length);
    /** Asks the server to stop what a row plays; the row is removed when the server has done so. */
    Q_INVOKABLE void stop(int row);
    /** Takes a row that has ended out of the list. */
    Q_INVOKABLE void dismiss(int row);

    /**
     * Takes a reply that came to the host; those to requests of others are ignored.
     *
     * @param result with "progress", percent, for a playback that goes on
     */
    void replyArrived(const QString& command, const QString& returnCode, const QString& errorText,
                      quint64 request, const QVariant& result);
    /** Reports that no answer to a request came in time. */
    void timedOut(quint64 request);
    /** Ends all rows: the connection is lost, and nobody knows how they go on. */
    void forget();
    /** Removes all rows: another server follows. */
    void clear();

Q_SIGNALS:
    /** Emitted when the number of rows has changed. */
    void countChanged();
    /** Emitted when something was not played or not stopped, asked for or not. @param text for people */
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
        QElapsedTimer since;     ///< Since the last reply.
        quint64 request = 0;     ///< Of the playback; 0 when it was not sent.
        quint64 stopRequest = 0; ///< Of its stop; 0 when none was asked for.
    };
    using Entries = std::vector<Entry>;

    static bool isLive(const Entry& entry) { return entry.state == Asked || entry.state == Playing; }
    void changed(std::size_t row);
    void end(std::size_t row, State state, const QString& problem = QString());
    void ended(std::size_t row, const QString& returnCode, const QString& errorText);
    void stopAnswered(std::size_t row, const QString& returnCode, const QString& errorText);
    void removeRow(std::size_t row);
    void tick();

    PluginClient& m_plugin;
    const RequestTimeouts& m_watch;
    const int m_patience; ///< ms
    Entries m_entries;
    QTimer m_timer; ///< While something plays.
};
