#pragma once

#include "src/models/ItemRoles.h"
#include "tests/plugin/PluginFixture.h"

#include <QAbstractItemModel>
#include <QSortFilterProxyModel>

#include <memory>

/** A plug-in whose models a test fills by replies and reads as the front end does, through proxies. */
struct RecordsFixture : PluginFixture
{
    explicit RecordsFixture(const QString& productType = QStringLiteral("debian"))
        : PluginFixture(productType)
    {
        framework.commands.clear();
        devices.reset(qobject_cast<QSortFilterProxyModel*>(plugin->getIPAudioModel(nullptr)));
        groups.reset(qobject_cast<QSortFilterProxyModel*>(plugin->getNetworkAudioGroupModel(nullptr)));
        schedules.reset(qobject_cast<QSortFilterProxyModel*>(plugin->getNetworkAudioScheduleModel(nullptr)));
    }

    ~RecordsFixture()
    {
        devices.reset();
        groups.reset();
        schedules.reset();
    }

    static QVariantMap device(int id, const QString& name, const QString& bindings = QString())
    {
        return {{"deviceID", id},
                {"deviceName", name},
                {"ip", "10.0.0.1"},
                {"port", 554},
                {"username", "u"},
                {"password", "p"},
                {"bindingCameraList", bindings}};
    }

    static QVariantMap group(int id, const QString& name, const QString& ids = QString())
    {
        return {{"groupID", id}, {"groupName", name}, {"networkAudioIDList", ids}};
    }

    void addDevice(int id, const QString& name, const QString& bindings = QString())
    {
        reply("AddIPAudio", "0", device(id, name, bindings));
    }

    void addGroup(int id, const QString& name, const QString& ids = QString())
    {
        reply("AddNetworkAudioGroup", "0", group(id, name, ids));
    }

    /** The source rows of a proxy in model order, one role of each. */
    static QVariantList column(const QSortFilterProxyModel& proxy, int role)
    {
        QVariantList values;
        const QAbstractItemModel* source = proxy.sourceModel();
        for (int row = 0; row < source->rowCount(); ++row) {
            values.append(source->index(row, 0).data(role));
        }
        return values;
    }

    /** The rows that a proxy shows, in its order, one role of each. */
    static QVariantList shown(const QAbstractItemModel& proxy, int role)
    {
        QVariantList values;
        for (int row = 0; row < proxy.rowCount(); ++row) {
            values.append(proxy.index(row, 0).data(role));
        }
        return values;
    }

    /** Notes the role of each change of a row in a model behind a proxy, in order. */
    static void noteRoles(const QSortFilterProxyModel& proxy, QStringList& notes)
    {
        QObject::connect(proxy.sourceModel(), &QAbstractItemModel::dataChanged, proxy.sourceModel(),
                         [&notes](const QModelIndex&, const QModelIndex&, const QVector<int>& roles) {
                             for (const int role : roles) {
                                 notes.append(QString::number(role));
                             }
                         });
    }

    std::unique_ptr<QSortFilterProxyModel> devices;
    std::unique_ptr<QSortFilterProxyModel> groups;
    std::unique_ptr<QSortFilterProxyModel> schedules;
};
