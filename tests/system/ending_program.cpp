// Writes, and ends as programs with sound do.

#include "system/ProgramEnd.h"

#include <cstdio>

namespace {

/** Tells its end. */
class Witness
{
public:
    explicit Witness(const char* name) : m_name(name) {}
    ~Witness() { std::printf("%s ends\n", m_name); }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

private:
    const char* m_name;
};

const Witness ofTheProcess("the process");

int run()
{
    const Witness ofTheProgram("the program");
    return 7;
}

} // namespace

int main()
{
    endProgram(run());
}
