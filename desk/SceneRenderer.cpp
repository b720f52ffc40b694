#include "desk/SceneRenderer.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr std::array<const char*, 3> choices = {"QT_QUICK_BACKEND", "QMLSCENE_DEVICE", "QSG_RHI"};

/** Parts of GL_RENDERER, in small letters, of implementations without a graphics processor. */
constexpr std::array<const char*, 8> withoutGraphics = {
    "llvmpipe", "softpipe", "swrast", "software", "swr (", "swiftshader", "gdi generic", "basic render"};

/** GL_RENDERER; empty without OpenGL. */
QByteArray rendererName()
{
    QOpenGLContext context;
    if (!context.create()) {
        return {};
    }
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!context.makeCurrent(&surface)) {
        return {};
    }
    const QByteArray name(reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER)));
    context.doneCurrent();
    return name;
}

} // namespace

void SceneRenderer::choose()
{
    if (std::any_of(std::begin(choices), std::end(choices), qEnvironmentVariableIsSet)) {
        return;
    }
    if (isComputedByProcessor(rendererName())) {
        QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
    }
}

bool SceneRenderer::isComputedByProcessor(const QByteArray& name)
{
    const QByteArray small = name.toLower();
    return name.isEmpty() || std::any_of(std::begin(withoutGraphics), std::end(withoutGraphics),
                                         [&](const char* part) { return small.contains(part); });
}
