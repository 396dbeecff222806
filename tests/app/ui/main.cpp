#include "app/ui/QuilletStyle.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // No screen is needed, wherever the tests run.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const quillet::ThemeSource theme;
    QApplication::setStyle(new quillet::QuilletStyle(theme));
    return RUN_ALL_TESTS();
}
