#pragma once

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QTimer>

#include <vector>

/**
 * What the desk has asked to be played, and how far that has come. The plug-in forwards progress without
 * telling whose it is: with one playback the server's number counts, with several the clock against the
 * file's length.
 */
class PlaybackBook : public QAbstractListModel
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

    explicit PlaybackBook(QObject* plugin);

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

    /** No answer to a play came in time. */
    void timedOut(const QString& command);
    /** The connection is lost: nobody knows how it goes on. */
    void forget();
    /** Another server follows: no row is of interest any more. */
    void clear();

Q_SIGNALS:
    void countChanged();
    /** The server tells that something could not be played, asked for or not. */
    void failed(const QString& text);

private Q_SLOTS:
    void playAudioResponse(bool success, int progress, const QString& errorCode, int id);
    void playAudioError(const QString& target, const QString& file, const QString& error,
                        const QString& schedule);

private:
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
    };

    void changed(std::size_t row);
    void end(std::size_t row, State state, const QString& problem = QString());
    void tick();

    QObject* m_plugin;
    std::vector<Entry> m_entries;
    QTimer m_timer; ///< While something plays.
};
