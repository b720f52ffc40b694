#pragma once

#include <QString>

/** The server's return codes in words for people. */
namespace ErrorMessages {

/** @param detail the server's own text, used for codes without words here; may be empty */
QString of(const QString& code, const QString& detail = QString());

} // namespace ErrorMessages
