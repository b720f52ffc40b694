#pragma once

#include <QVariantMap>

#include <optional>

/** The types of what a record has under its keys. Nothing is converted: "554" is no port. Any thread. */
namespace FieldTypes {

/** A value of another type than its key's. */
struct Mistyped
{
    QString key;    ///< Where it is.
    QString wanted; ///< What belongs there, for people.
};

/**
 * Returns a value of another type than its key's; empty when there is none. A value that is missing, or
 * invalid, has no type, and keys that no record has are not looked at.
 */
std::optional<Mistyped> firstMistyped(const QVariantMap& fields);

/** Reads a whole number of any number type, as senders' languages differ; empty for other values, and beyond
 * int. */
std::optional<int> wholeNumber(const QVariant& value);

} // namespace FieldTypes
