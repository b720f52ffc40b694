#pragma once

#include <QStringList>

/** What QML complains of: a property that is not there, a value of a wrong type, a loop of bindings, a broken
 * layout. */
namespace QmlComplaints {

/** Whether a line of a log is one. @param file that it came from; may be null */
bool isOne(const QString& text, const char* file = nullptr);

/** Keeps them from now on; they are printed as ever. */
void watch();

/** Those since the last call. */
QStringList take();

} // namespace QmlComplaints
