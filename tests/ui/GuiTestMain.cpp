// A test program with a window. VMR_TEST_API names the graphics interface that it must really run on.
#include <gtest/gtest.h>

#include <QGuiApplication>

#include "ui/platform/UiSetup.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();  // listing needs no display
    vmr::prepareGraphics(vmr::rasteriserRecord({}));
    QGuiApplication app(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    vmr::registerFonts();
    return RUN_ALL_TESTS();
}
