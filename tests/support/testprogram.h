// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QTest>

/// The tests of a folder are one program, which is quicker to build than a program for each. Its
/// first argument names the test, the others are Qt Test's: app_tests tst_queuetable_window
/// rowsKeepTheirOrder
namespace testprogram {

using Test = int (*)(int argc, char *argv[]);

/// Makes a test known under the name of its source file, without the suffix. For FILMWRIGHT_TEST.
bool add(const char *sourceFile, Test test);

/// Runs the slots of `Object`, argv[0] being the test's name. Returns the number of failures.
template <typename Object, typename Application>
int run(int argc, char *argv[])
{
    if constexpr (requires { Object::initMain(); })
        Object::initMain();
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi); // as QTEST_MAIN does
    const Application application(argc, argv);
    Object object;
    return QTest::qExec(&object, argc, argv);
}

} // namespace testprogram

/// Stands at the end of a test's file. `Application` is what the test needs of QCoreApplication,
/// QGuiApplication, QApplication.
#define FILMWRIGHT_TEST(Object, Application)                                                       \
    [[maybe_unused]] static const bool added##Object =                                             \
        testprogram::add(__FILE__, testprogram::run<Object, Application>);
