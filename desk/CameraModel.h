#pragma once

#include <QAbstractListModel>
#include <QVariant>

#include <vector>

/**
 * The cameras of the server as records, searched by a text. Whatever the server sends, each field has its
 * type and its limit here. Used on the window's thread.
 */
class CameraModel : public QAbstractListModel
{
    Q_OBJECT
    /** Only cameras with this text in their name or address have a row, in either case; all for an empty one.
     */
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)

public:
    /** The fields of a row. */
    enum Role
    {
        IdRole = Qt::UserRole + 1, ///< "camId", text.
        NameRole,                  ///< For people.
        KindRole,                  ///< "camKind", text.
        AddressRole,               ///< "camAddress"; empty for a camera without a record.
        UserRole,                  ///< "username".
        OnlineRole,                ///< bool.
        SettingsRole,              ///< A map as of CameraSettingsRecord, with all keys.
        RecordRole,                ///< Whether it is a record, which can be changed and deleted.
    };

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

    /** Sets the cameras, as the server lists them: maps with the keys of GetCamera. */
    void setCameras(const QVariantList& cameras);
    /** Removes all cameras: another server follows, and lists its own. */
    void forgetServer() { setCameras(QVariantList()); }

Q_SIGNALS:
    /** Emitted when search has changed. */
    void searchChanged();

private:
    struct Row
    {
        QString id;
        QString name;
        QString kind;
        QString address;
        QString user;
        bool online = false;
        QVariantMap settings;

        bool operator==(const Row& other) const
        {
            return id == other.id && name == other.name && kind == other.kind && address == other.address &&
                   user == other.user && online == other.online && settings == other.settings;
        }
    };

    static Row rowOf(const QVariantMap& camera);
    void show(std::vector<Row> rows);
    void filter();

    std::vector<Row> m_all;
    std::vector<Row> m_rows; ///< Those that the search finds.
    QString m_search;
};
