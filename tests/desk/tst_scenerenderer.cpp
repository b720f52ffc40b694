// Which names of OpenGL stand for a processor in place of a graphics processor.

#include "desk/SceneRenderer.h"

#include <QTest>

class TestSceneRenderer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
};

void TestSceneRenderer::names_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("byProcessor");
    const auto add = [](const char* name, bool byProcessor) {
        QTest::newRow(name) << QByteArray(name) << byProcessor;
    };
    add("", true); // no OpenGL
    add("llvmpipe (LLVM 15.0.6, 256 bits)", true);
    add("Gallium 0.4 on llvmpipe (LLVM 3.8, 256 bits)", true);
    add("softpipe", true);
    add("Software Rasterizer", true);
    add("SWR (LLVM 11.0, 512 bits)", true);
    add("Mesa DRI swrast", true);
    add("Google SwiftShader", true);
    add("GDI Generic", true);
    add("ANGLE (Microsoft Basic Render Driver Direct3D11 vs_5_0 ps_5_0)", true);
    add("Mesa Intel(R) UHD Graphics 620 (KBL GT2)", false);
    add("AMD Radeon RX 580 Series (polaris10, LLVM 15.0.6, DRM 3.49, 6.1.0-13-amd64)", false);
    add("NVIDIA GeForce GTX 1050/PCIe/SSE2", false);
    add("ANGLE (Intel(R) HD Graphics 4000 Direct3D11 vs_5_0 ps_5_0)", false);
    add("SVGA3D; build: RELEASE; LLVM;", false); // the graphics processor of a virtual machine's host
    add("virgl", false);
}

void TestSceneRenderer::names()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, byProcessor);
    QCOMPARE(SceneRenderer::isComputedByProcessor(name), byProcessor);
}

QTEST_GUILESS_MAIN(TestSceneRenderer)
#include "tst_scenerenderer.moc"
