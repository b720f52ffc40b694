#pragma once

/**
 * Ends what must not outlive the application object, such as threads that use Qt's sound, in a library that
 * does not know how its program ends. The routine runs, on the thread that does it, when
 *
 *   - the QCoreApplication is destroyed, before anything of it is gone;
 *   - the program ends by exit() and leaves its QCoreApplication as it is: by the destructor;
 *   - the library is unloaded: by the destructor.
 *
 * Make it a static object of a function, after what the routine uses: at the end of the process static
 * objects are destroyed in the opposite order. The destructor then waits a tenth of a second, so that Qt's
 * sound is idle when its own static objects are destroyed. On Windows the destructor neither runs the routine
 * nor waits: the other threads of the process have ended before it there.
 */
class ApplicationEnd
{
public:
    /** @param routine may run several times, and with nothing to end */
    explicit ApplicationEnd(void (*routine)());
    ~ApplicationEnd();
    ApplicationEnd(const ApplicationEnd&) = delete;
    ApplicationEnd& operator=(const ApplicationEnd&) = delete;

    /**
     * Makes the routine run at the end of the application. Call it whenever there is something to end again:
     * a routine that has run is not run again by itself.
     */
    void arm();

private:
    void (*m_routine)();
};
