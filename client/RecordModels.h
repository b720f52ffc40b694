#pragma once

/**
 * The plug-in's item models with names for their fields: each is a view of a model that the plug-in has made,
 * sorted by name. QML reads the fields under the plug-in's role names; C++ reads whole rows.
 */

#include <QIdentityProxyModel>
#include <QList>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

/** An IP audio device. */
struct DeviceRow
{
    int id = 0;
    QString name;
    QString address;
    int port = 0;
    QString user;
    QString password;
    QStringList cameras; ///< Ids of the cameras that are bound to it.
};

/** A group of devices. */
struct GroupRow
{
    int id = 0;
    QString name;
    QList<int> devices;      ///< Ids.
    QStringList deviceNames; ///< As many as could be found.
};

/** When the server plays which file. */
struct ScheduleRow
{
    int id = 0;
    bool enabled = false;
    QString name;
    QString start;        ///< ISO 8601, the server's local time.
    int type = 0;         ///< 0 once, 1 daily, 2 weekly.
    QVariantMap settings; ///< "weekdays": 1 Monday to 7 Sunday.
    QString end;          ///< As start.
    bool endEnabled = false;
    int file = 0;       ///< Id; 0 when it was deleted.
    QList<int> groups;  ///< Ids.
    QList<int> devices; ///< Ids.
};

/** What the models have in common: their fields are found by role name, once. */
class RecordModel : public QIdentityProxyModel
{
    Q_OBJECT

public:
    /** The role names that the source lacks. */
    QStringList missingRoles() const { return m_missing; }

protected:
    /**
     * @param source    sorted by name, and a QSortFilterProxyModel where it is to be searched
     * @param roleNames those of the fields, in the order of the numbers that field() takes
     */
    RecordModel(QAbstractItemModel* source, const QVector<QByteArray>& roleNames, QObject* parent);

    /** One field of a row; invalid for one that is not there. */
    QVariant field(int row, int number) const;

private:
    QVector<int> m_roles; ///< By the number of the field; -1 for one that the source lacks.
    QStringList m_missing;
};

class DeviceModel : public RecordModel
{
    Q_OBJECT

public:
    DeviceModel(QAbstractItemModel* source, QObject* parent);

    DeviceRow device(int row) const;

    /** Shows the devices with this text in their name, in either case; all for an empty one. */
    Q_INVOKABLE void setFilter(const QString& text);
};

class GroupModel : public RecordModel
{
    Q_OBJECT

public:
    GroupModel(QAbstractItemModel* source, QObject* parent);

    GroupRow group(int row) const;

    /** Shows the groups with this text in their name or a device's, in either case; all for an empty one. */
    Q_INVOKABLE void setFilter(const QString& text);

    Q_INVOKABLE void setSort(Qt::SortOrder order);

    /** The signatures that the source is to have. */
    static QStringList sourceMethods();
};

class ScheduleModel : public RecordModel
{
    Q_OBJECT

public:
    ScheduleModel(QAbstractItemModel* source, QObject* parent);

    ScheduleRow schedule(int row) const;

    /** A row as the record that it came from, under the words of the protocol; empty for no row. */
    Q_INVOKABLE QVariantMap record(int row) const;
};
