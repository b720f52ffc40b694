#pragma once

/**
 * Rows of the item models: a record becomes one item whose fields stand under roles, and is found by its id.
 * A row takes values as they are in the record; keys without a role are dropped.
 */

#include <QModelIndexList>
#include <QVariantMap>
#include <Qt>

class QAbstractItemModel;
class QStandardItem;

/** The role of the id in every model. */
inline constexpr int idRole = Qt::UserRole + 1;

/** The new item belongs to the model that it is appended to. */
QStandardItem* makeIPAudioRow(const QVariantMap& record);
QStandardItem* makeNetworkAudioGroupRow(const QVariantMap& record);
QStandardItem* makeNetworkAudioScheduleRow(const QVariantMap& record);

/**
 * The first row, in model order, whose id begins with the wanted one as text: the id 1 also finds a row of
 * id 12. Empty when there is none.
 */
QModelIndexList findRowById(const QAbstractItemModel* model, int id);
