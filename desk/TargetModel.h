#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QSet>
#include <QTimer>
#include <QVariant>

#include <vector>

class DeviceModel;

/**
 * Cameras and speakers in one list, searched by a text, with what is to be talked to chosen in it: at most
 * one camera, since the plug-in opens no second one, and any number of speakers.
 */
class TargetModel : public QAbstractListModel
{
    Q_OBJECT
    /** Only targets with this text in their name or detail have a row, in either case; all for an empty one.
     */
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    /** How many targets there are, found or not. */
    Q_PROPERTY(int total READ total NOTIFY listed)
    /** The number of targets that are chosen. */
    Q_PROPERTY(int chosenCount READ chosenCount NOTIFY chosenChanged)
    /** The names of the chosen targets, joined by commas. */
    Q_PROPERTY(QString chosenNames READ chosenNames NOTIFY chosenChanged)
    /** The id of the chosen camera; empty for none. */
    Q_PROPERTY(QString chosenCamera READ chosenCamera NOTIFY chosenChanged)
    /** The name of the chosen camera; empty for none. */
    Q_PROPERTY(QString chosenCameraName READ chosenCameraName NOTIFY chosenChanged)

public:
    /** The fields of a row. */
    enum Role
    {
        KeyRole = Qt::UserRole + 1, ///< "camera:" or "speaker:" and the id.
        KindRole,                   ///< "camera" or "speaker".
        NameRole,                   ///< For people.
        DetailRole,                 ///< A camera's id, a speaker's address.
        StateRole,                  ///< See State.
        ChosenRole,                 ///< Whether it is chosen.
    };

    /** How a target is. */
    enum State
    {
        Ready,   ///< It can be talked to, as far as is known.
        Offline, ///< The server reports it as offline.
        Asked,   ///< A talk is being opened.
        Talking, ///< A talk is open.
        Failed,  ///< The last talk could not be opened, or was lost.
    };
    Q_ENUM(State)

    /** A camera or a speaker. */
    struct Target
    {
        bool camera = false; ///< Otherwise it is a speaker.
        QString id;          ///< A speaker's is a number.
        QString name;        ///< For people.
        QString detail;      ///< A camera's id, a speaker's address.
        bool online = true;  ///< As the server reports it; always true for a speaker.
        State state = Ready; ///< Of its talk.

        /** Returns the key: "camera:" or "speaker:" and the id. */
        QString key() const { return (camera ? QStringLiteral("camera:") : QStringLiteral("speaker:")) + id; }
        /** Returns whether this is the same camera or speaker. */
        bool isSameAs(const Target& other) const { return camera == other.camera && id == other.id; }
        /** Returns whether a row would show the same. */
        bool looksLike(const Target& other) const
        {
            return name == other.name && detail == other.detail && state == other.state;
        }
    };

    TargetModel();

    /** Returns the number of rows, those that the search finds; 0 for the children of a row. */
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    /** Returns a field of a row, see Role; invalid for other roles and rows. */
    QVariant data(const QModelIndex& index, int role) const override;
    /** Returns the names of the fields for QML. */
    QHash<int, QByteArray> roleNames() const override;

    /** Returns the property search. */
    QString search() const { return m_search; }
    /** Sets the property search. */
    void setSearch(const QString& text);
    /** Returns the property total. */
    int total() const { return static_cast<int>(m_targets.size()); }
    /** Returns the property chosenCount. */
    int chosenCount() const { return m_chosen.size(); }
    /** Returns the property chosenNames. */
    QString chosenNames() const;

    /** Returns the property chosenCamera. */
    QString chosenCamera() const;
    /** Returns the property chosenCameraName. */
    QString chosenCameraName() const;

    /** Sets where the speakers come from. Called once. */
    void setSpeakers(DeviceModel* speakers);
    /** Sets the cameras, as the host reports them: maps with "camId", "camName", "online". */
    void setCameras(const QVariantList& cameras);
    /** Removes all targets: another server follows, and lists its own. */
    void forgetServer();

    /** Returns the chosen targets, the camera first. */
    std::vector<Target> chosen() const;
    /** Returns the target of a key; null for none. */
    const Target* find(const QString& key) const;
    /** Sets the state of a target; does nothing for a key that none has. */
    void setState(const QString& key, State state);
    /** Sets every target to ready, but for those that failed or are offline. */
    void endStates();

    /** Chooses a target or no longer; a camera takes the place of the one that was chosen. */
    Q_INVOKABLE void choose(const QString& key, bool chosen);
    /** Chooses a target and nobody else. */
    Q_INVOKABLE void chooseOnly(const QString& key);
    /** Returns the key of a row; empty for none. */
    Q_INVOKABLE QString keyAt(int row) const;
    /** Returns the row of a key; -1 when it is not shown. */
    Q_INVOKABLE int rowOf(const QString& key) const;
    /** Returns the cameras, for dialogs: maps with "id" and "name". */
    Q_INVOKABLE QVariantList cameras() const;

public Q_SLOTS:
    /** Reports that the speakers' model holds this server's speakers. */
    void speakersListed();

Q_SIGNALS:
    /** Emitted when search has changed. */
    void searchChanged();
    /** Emitted when chosenCount or chosenNames has changed. */
    void chosenChanged();
    /** Emitted when the list was made anew. */
    void listed();
    /** Emitted before rows come, go or change places. */
    void aboutToRearrange();
    /** Emitted after aboutToRearrange, when that is done: rowOf finds the rows again. */
    void rearranged();

private:
    void rebuild();
    void rearrange(std::vector<Target> targets);
    void refresh(const QString& key);

    QPointer<DeviceModel> m_speakers;
    bool m_speakersListed = true; ///< False while m_speakers has those of the last server.
    QVariantList m_cameras;
    std::vector<Target> m_targets;
    std::vector<std::size_t> m_shown; ///< Indices of m_targets.
    QString m_search;
    QSet<QString> m_chosen;
    QTimer m_rebuild; ///< So that a full list is taken at once.
};
