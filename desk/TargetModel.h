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
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    /** How many targets there are, found or not. */
    Q_PROPERTY(int total READ total NOTIFY listed)
    Q_PROPERTY(int chosenCount READ chosenCount NOTIFY chosenChanged)
    /** The chosen ones' names, joined. */
    Q_PROPERTY(QString chosenNames READ chosenNames NOTIFY chosenChanged)

public:
    enum Role
    {
        KeyRole = Qt::UserRole + 1, ///< "camera:" or "speaker:" and the id.
        KindRole,                   ///< "camera" or "speaker".
        NameRole,
        DetailRole,
        StateRole, ///< See State.
        ChosenRole,
    };

    enum State
    {
        Ready,
        Offline,
        Asked,   ///< A talk is being opened.
        Talking, ///< A talk is open.
        Failed,  ///< The last talk could not be opened, or was lost.
    };
    Q_ENUM(State)

    struct Target
    {
        bool camera = false;
        QString id; ///< A speaker's is a number.
        QString name;
        QString detail;
        bool online = true;
        State state = Ready;

        QString key() const { return (camera ? QStringLiteral("camera:") : QStringLiteral("speaker:")) + id; }
        bool isSameAs(const Target& other) const { return camera == other.camera && id == other.id; }
        bool looksLike(const Target& other) const
        {
            return name == other.name && detail == other.detail && state == other.state;
        }
    };

    TargetModel();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    QString search() const { return m_search; }
    void setSearch(const QString& text);
    int total() const { return static_cast<int>(m_targets.size()); }
    int chosenCount() const { return m_chosen.size(); }
    QString chosenNames() const;

    /** Where the speakers come from. */
    void setSpeakers(DeviceModel* speakers);
    /** The cameras come from the host: maps with "camId", "camName", "online". */
    void setCameras(const QVariantList& cameras);
    /** Another server follows: nobody is chosen, and nobody is listed until that server lists its own. */
    void forgetServer();

    /** The chosen targets, the camera first. */
    std::vector<Target> chosen() const;
    /** The target of a key; null for none. */
    const Target* find(const QString& key) const;
    void setState(const QString& key, State state);
    /** Every target is ready again, but for those that failed. */
    void endStates();

    Q_INVOKABLE void choose(const QString& key, bool chosen);
    Q_INVOKABLE void chooseOnly(const QString& key);
    /** The key of a row; empty for none. */
    Q_INVOKABLE QString keyAt(int row) const;
    /** The row of a key; -1 when it is not shown. */
    Q_INVOKABLE int rowOf(const QString& key) const;
    /** The cameras, for dialogs: maps with "id" and "name". */
    Q_INVOKABLE QVariantList cameras() const;

public Q_SLOTS:
    /** The speakers' model holds this server's speakers. */
    void speakersListed();

Q_SIGNALS:
    void searchChanged();
    void chosenChanged();
    void listed();
    /** Before and after rows come, go or change places; rowOf finds them again. */
    void aboutToRearrange();
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
