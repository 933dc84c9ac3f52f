#pragma once

#include <cstdio>

#include <QObject>
#include <QTest>

#include "e2e/XSession.h"

namespace venlo::test
{

/// main() of a test on a display of its own.
template <typename TestObject, typename Application>
int runOnDisplay(int argc, char **argv)
{
    // Listings are in Japanese time.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", "Asia/Tokyo");
    XSession session;
    QString why;
    if (!session.start(&why)) {
        std::fprintf(stderr, "%s\n", qPrintable(why));
        return 1;
    }
    session.enter();
    int status = 1;
    {
        Application application(argc, argv);
        TestObject test(application);
        status = QTest::qExec(&test, argc, argv);
    }
    return status; // the session ends behind the application that it serves
}

} // namespace venlo::test
