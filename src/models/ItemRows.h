#pragma once

/**
 * @file
 * Rows of the item models: a record becomes one item with its fields under roles, and is found by its id. A
 * row takes values as they are in the record; keys without a role are dropped.
 */

#include <QModelIndexList>
#include <QVariantMap>
#include <Qt>

class QAbstractItemModel;
class QStandardItem;

/** The role of the id in every model. */
inline constexpr int idRole = Qt::UserRole + 1;

/** Makes the row of a device; the caller owns it until it appends it to a model. */
QStandardItem* makeIPAudioRow(const QVariantMap& record);
/** Makes the row of a group; the caller owns it until it appends it to a model. */
QStandardItem* makeNetworkAudioGroupRow(const QVariantMap& record);
/** Makes the row of a schedule; the caller owns it until it appends it to a model. */
QStandardItem* makeNetworkAudioScheduleRow(const QVariantMap& record);

/**
 * Returns the first row, in model order, whose id begins with the wanted one as text: the id 1 also finds a
 * row of id 12. Empty when there is none.
 */
QModelIndexList findRowById(const QAbstractItemModel* model, int id);
