#pragma once

#include <QString>

/** The server's return codes in words for people. */
namespace ErrorMessages {

/** Returns a text of the server in one line, cut after 200 characters. */
QString shortened(const QString& text);

/** @param detail the server's own text, used, shortened, for codes without words here; may be empty */
QString of(const QString& code, const QString& detail = QString());

/** Returns the words for a code together with the server's own text, shortened, where that says more. */
QString withDetail(const QString& code, const QString& detail);

/** Returns the server's own text alone as words of the server, cut if it is long; empty without one. */
QString serversWords(const QString& detail);

} // namespace ErrorMessages
