#pragma once

#include <QString>
#include <QVariant>

/**
 * @file
 * Texts from other processes as people are shown them. All functions may be called on any thread.
 */

/**
 * Returns a name that came from another process as a message can show it: in double quotes, with a question
 * mark for each character that cannot be printed, and cut after 30 characters.
 */
QString printableName(const QString& name);

/**
 * Returns a text that came from another process as a line or a cell of a table can show it: with a question
 * mark for each character that controls a terminal, ends a line, or changes the direction of the text around
 * it (Unicode Standard Annex 9, clause 2).
 */
QString printableText(const QString& text);

/** Returns the payload of a reply or an event with all names and error texts in it as printableText gives
 * them, and everything else, passwords too, as it is. */
QVariant withPrintableNames(const QVariant& payload);
