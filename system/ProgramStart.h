#pragma once

/**
 * Settings of the environment that programs with sound and media files need. First in main, before the
 * application object and any thread. What the user has set stays.
 */
void prepareProgram();
