#pragma once

#include <QByteArray>

/** Which of Qt Quick's renderers draws the window. */
namespace SceneRenderer {

/**
 * Chooses Qt Quick's software renderer where no graphics processor computes OpenGL, or where there is no
 * OpenGL. OpenGL computed by the processor draws the whole window at each change; the software renderer
 * draws what has changed. A renderer that the environment chooses (QT_QUICK_BACKEND, QMLSCENE_DEVICE,
 * QSG_RHI; an empty value is Qt's own choice) stays. To be called after the application is made and before
 * the first window; on the application's thread.
 */
void choose();

/** Returns whether the processor computes OpenGL. @param name GL_RENDERER; empty without OpenGL */
bool isComputedByProcessor(const QByteArray& name);

} // namespace SceneRenderer
