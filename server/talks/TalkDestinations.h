#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/**
 * Takes the talk tokens out of the "targets" of a talk packet: destination elements without anything between
 * them, each "<Dest>token</Dest>" or "<Dest>relayPath/token</Dest>". A token holds no "/" or "<".
 *
 * @return the tokens in order; empty when the text is not such a list
 */
std::optional<QStringList> parseTalkDestinations(const QString& targets);
