#pragma once

#include "tests/support/ChildProcess.h"

/**
 * A private X server without a screen, for the program that makes it and its children. Ends with the object.
 * To be made before the application.
 */
class VirtualDisplay
{
public:
    /** Starts the server and points this process at it; ready says whether that worked. */
    VirtualDisplay(int width, int height);
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    bool ready() const { return m_ready; }

private:
    ChildProcess m_server;
    bool m_ready = false;
};
