#pragma once

/**
 * Sets the environment variables that programs with sound and media files need. Call it first in main, before
 * the application object and any thread. A variable that the user has set keeps its value.
 */
void prepareProgram();
