#pragma once

/**
 * The host framework's configuration handle of one server.
 *
 * It reaches the plug-in only as a pointer argument of the per-server entry points of PluginBase and is
 * never dereferenced, so its contents are not described.
 */
class ConfigBase;
