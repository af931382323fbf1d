// A window over made-up bars, to look at: chart_demo [WxH] [entered|login|setup|error|busy|live] [FILE.png]
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>
#include <cmath>
#include <cstdio>

#include "ui/PaneViewModel.h"
#include "ui/SyntheticBars.h"
#include "ui/UiSetup.h"
#include "ui/WindowPicture.h"

int main(int argc, char** argv) {
    vmr::prepareGraphics();
    QGuiApplication app(argc, argv);
    vmr::registerFonts();
    const auto arguments = QCoreApplication::arguments();
    const QStringList size = arguments.value(1, QStringLiteral("1400x900")).split('x');
    const QString stage = arguments.value(2, QStringLiteral("entered"));
    const QString file = arguments.value(3);

    auto bars = vmr::test::syntheticBars(390);
    vmr::PaneViewModel view;
    vmr::PaneViewModel::Fields fields;
    fields.entered = stage == "entered" || stage == "live" || stage == "classic";
    fields.connected = true;
    fields.status = QStringLiteral("Connected");
    fields.symbol = QStringLiteral("NQ");
    fields.futures = {"NQ", "ES", "RTY", "YM", "GC", "CL"};
    fields.stocks = {"AAPL", "NVDA", "MSFT", "GOOGL", "AMZN", "META", "TSLA"};
    if (stage == "setup")
        fields.setupProblem = QStringLiteral(
            "No data relay is configured. Set VMR_RELAY_URL to its address, or start Velmora with --practice.");
    if (stage == "error") fields.authError = QStringLiteral("Auth error (400): INVALID_PASSWORD");
    if (stage == "busy") fields.signingIn = true;
    view.setFields(fields);
    vmr::PaneViewModel::Chart chart;
    chart.candles = &bars;
    if (stage == "classic") chart.config.candleTheme = "classic";
    view.setChart(chart);

    QQmlApplicationEngine engine;
    vmr::registerQml(engine);
    engine.setInitialProperties({{QStringLiteral("pane"), QVariant::fromValue(&view)}});
    engine.load(QUrl(QStringLiteral("qrc:/Velmora/Main.qml")));
    if (engine.rootObjects().isEmpty()) return 1;
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
    window->resize(size.value(0).toInt(), size.value(1).toInt());
    window->show();

    QTimer ticks;
    int tick = 0;
    QObject::connect(&ticks, &QTimer::timeout, &view, [&] {
        auto& last = bars.back();
        last.close = last.open + std::round(std::sin(++tick / 7.0) * 40) / 4;
        last.high = std::max(last.high, last.close);
        last.low = std::min(last.low, last.close);
        view.setChart(chart);
    });
    if (stage == "live") ticks.start(100);
    if (!file.isEmpty()) {
        QTimer::singleShot(1500, window, [&] {
            std::printf("%s\n", vmr::windowPicture(*window).save(file) ? "saved" : "not saved");
            QCoreApplication::quit();
        });
    }
    return QGuiApplication::exec();
}
