#pragma once

#include <QtGlobal>

/** Marks the classes whose members the library exports. */
#ifdef VOICEDESK_LIBRARY
#define VOICEDESK_EXPORT Q_DECL_EXPORT
#else
#define VOICEDESK_EXPORT Q_DECL_IMPORT
#endif
