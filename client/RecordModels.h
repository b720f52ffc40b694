#pragma once

/**
 * @file
 * The plug-in's item models with names for their fields: each is a view of a model that the plug-in has made,
 * sorted by name. QML reads the fields under the plug-in's role names; C++ reads whole rows.
 */

#include <QHash>
#include <QIdentityProxyModel>
#include <QList>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

/** An IP audio device. */
struct DeviceRow
{
    int id = 0;          ///< "deviceID".
    QString name;        ///< "deviceName".
    QString address;     ///< "ip".
    int port = 0;        ///< "port".
    QString user;        ///< "username".
    QString password;    ///< "password", in clear text.
    QStringList cameras; ///< Ids of the cameras that are bound to it.
};

/** A group of devices. */
struct GroupRow
{
    int id = 0;              ///< "groupID".
    QString name;            ///< "groupName".
    QList<int> devices;      ///< Ids.
    QStringList deviceNames; ///< Of the devices that are known.
};

/** A schedule: when the server plays which file. */
struct ScheduleRow
{
    int id = 0;              ///< "scheduleID".
    bool enabled = false;    ///< "enableSchedule".
    QString name;            ///< "scheduleName".
    QString start;           ///< ISO 8601, the server's local time.
    int type = 0;            ///< 0 once, 1 daily, 2 weekly.
    QVariantMap settings;    ///< "weekdays": 1 Monday to 7 Sunday.
    QString end;             ///< As start.
    bool endEnabled = false; ///< Whether there is an end.
    int file = 0;            ///< Id; 0 when it was deleted.
    QList<int> groups;       ///< Ids.
    QList<int> devices;      ///< Ids.
};

/**
 * The base of the models: their fields are found by role name, once, and are of the right type whatever the
 * server has sent.
 */
class RecordModel : public QIdentityProxyModel
{
    Q_OBJECT

public:
    /** Returns the data of the source; a field is converted to its type, and empty where that fails. */
    QVariant data(const QModelIndex& index, int role) const override;

    /** Returns the role names that the source lacks. */
    QStringList missingRoles() const { return m_missing; }

protected:
    /** The role name of a field, and its type. */
    struct FieldType
    {
        QByteArray role;      ///< As the plug-in names it.
        QMetaType::Type type; ///< Of its values.
    };

    /**
     * @param source    sorted by name, and a QSortFilterProxyModel where it is to be searched
     * @param fields    in the order of the numbers that field() takes
     * @param parent    the owner, or null
     */
    RecordModel(QAbstractItemModel* source, const QVector<FieldType>& fields, QObject* parent);

    /** Returns one field of a row; invalid when there is none. */
    QVariant field(int row, int number) const;

private:
    QVector<int> m_roles;                ///< By the number of the field; -1 for one that the source lacks.
    QHash<int, QMetaType::Type> m_types; ///< By role.
    QStringList m_missing;
};

/** The IP audio devices, sorted by name. */
class DeviceModel : public RecordModel
{
    Q_OBJECT

public:
    /** @param source of the plug-in's getIPAudioModel */
    DeviceModel(QAbstractItemModel* source, QObject* parent);

    /** Returns a row. */
    DeviceRow device(int row) const;

    /** Shows the devices with this text in their name, in either case; all for an empty one. */
    Q_INVOKABLE void setFilter(const QString& text);
};

/** The groups of devices, sorted by name. */
class GroupModel : public RecordModel
{
    Q_OBJECT

public:
    /** @param source of the plug-in's getNetworkAudioGroupModel */
    GroupModel(QAbstractItemModel* source, QObject* parent);

    /** Returns a row. */
    GroupRow group(int row) const;

    /** Shows the groups with this text in their name or a device's, in either case; all for an empty one. */
    Q_INVOKABLE void setFilter(const QString& text);

    /** Sorts by name in this order. */
    Q_INVOKABLE void setSort(Qt::SortOrder order);

    /** Returns the signatures of the methods that the source must have. */
    static QStringList sourceMethods();
};

/** The schedules, sorted by name. */
class ScheduleModel : public RecordModel
{
    Q_OBJECT

public:
    /** @param source of the plug-in's getNetworkAudioScheduleModel */
    ScheduleModel(QAbstractItemModel* source, QObject* parent);

    /** Returns a row. */
    ScheduleRow schedule(int row) const;

    /** Returns a row as a record of the protocol; empty when there is no such row. */
    Q_INVOKABLE QVariantMap record(int row) const;
};
