#pragma once

#include <QtGlobal>

/**
 * @def VOICEDESK_EXPORT
 * Marks the classes whose members the library exports.
 */
#ifdef VOICEDESK_LIBRARY
#define VOICEDESK_EXPORT Q_DECL_EXPORT
#else
#define VOICEDESK_EXPORT Q_DECL_IMPORT
#endif
