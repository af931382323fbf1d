// What one pane's views show, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "chart/OverlayLists.h"
#include "chart/RenderConfig.h"
#include "market/Records.h"
#include "perf/BenchSettings.h"

namespace vmr {

class ChartTrading;
class Perf;

/// Mirrors a pane for QML and passes gestures on; decides nothing about the market. Main thread. `bindPane` ties it to
/// an `AppModel`; without one it shows what it is told.
class PaneViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(bool entered READ entered NOTIFY changed)
    Q_PROPERTY(bool signingIn READ signingIn NOTIFY changed)
    Q_PROPERTY(QString authError READ authError NOTIFY changed)
    Q_PROPERTY(QString setupProblem READ setupProblem NOTIFY changed)
    Q_PROPERTY(QString signInHint READ signInHint NOTIFY changed)
    Q_PROPERTY(QString userEmail READ userEmail NOTIFY changed)
    Q_PROPERTY(bool connected READ connected NOTIFY changed)
    Q_PROPERTY(bool connLimited READ connLimited NOTIFY changed)
    Q_PROPERTY(QString status READ status NOTIFY changed)
    Q_PROPERTY(QString symbol READ symbol NOTIFY changed)
    Q_PROPERTY(int timeframe READ timeframe NOTIFY changed)
    Q_PROPERTY(QStringList futures READ futures NOTIFY changed)
    Q_PROPERTY(QStringList stocks READ stocks NOTIFY changed)
    Q_PROPERTY(QString notice READ notice NOTIFY changed)
    Q_PROPERTY(QString noticeDetail READ noticeDetail NOTIFY changed)
    Q_PROPERTY(bool empty READ empty NOTIFY emptyChanged)

 public:
    struct Fields {
        bool entered = false;
        bool signingIn = false;
        QString authError;
        QString setupProblem;
        QString signInHint;  ///< who can sign in here, when that is no secret
        QString userEmail;
        bool connected = false;
        bool connLimited = false;
        QString status;
        QString symbol;
        int timeframe = 1;
        QStringList futures;
        QStringList stocks;
        QString notice;  ///< a passing notice over the chart; empty for none
        QString noticeDetail;
        bool operator==(const Fields&) const = default;
    };
    struct Actions {
        std::function<void(const QString& email, const QString& password, bool remember)> signIn;
        std::function<void()> signOut;
        std::function<void(const QString& symbol)> switchSymbol;
        std::function<void(int minutes)> setTimeframe;
        std::function<void()> marketClosedOrder;  ///< an order was chosen while the market is closed
        std::function<void()> interactionEnded;   ///< a drag of the chart ended
        /// The chart's camera moved; nothing: the chart is gone.
        std::function<void(const std::optional<Viewport>& viewport)> viewportChanged;
    };
    /// What the chart's input reaches beside the pane; null and empty where there is none. All outlive the views.
    struct Surroundings {
        const Clock* clock = nullptr;  ///< market time
        MainLoop* main = nullptr;
        ChartTrading* trading = nullptr;
        Perf* perf = nullptr;
        BenchSettings bench;
        std::function<void(const std::string& line)> print;
        std::function<void()> quit;  ///< at the end of a benchmark
    };
    /// What the chart draws. The lists stay valid until the next `setChart`; null counts as empty.
    struct Chart {
        const std::vector<Candle>* candles = nullptr;
        RenderConfig config;
        int sessionHHMM = 1800;
        const OverlayLists* overlays = nullptr;
        std::uint64_t overlayRevision = 0;  ///< raised when they were rebuilt
        const std::vector<PriceLevel>* levels = nullptr;
        const std::vector<StrikeRow>* strikes = nullptr;
        double etfRatio = 1;
        std::optional<double> flipStrike;
        const std::vector<StrikeRow>* secStrikes = nullptr;
        double secRatio = 1;
        const std::vector<BubblePt>* bubbles = nullptr;
        const std::vector<TrianglePt>* triangles = nullptr;
        std::string simRoot;  ///< empty: no trading on this chart
    };

    using QObject::QObject;

    const Fields& fields() const { return fields_; }
    void setFields(Fields fields);
    void setActions(Actions actions) { actions_ = std::move(actions); }
    const Actions& actions() const { return actions_; }

    const Surroundings& surroundings() const { return surroundings_; }
    void setSurroundings(Surroundings surroundings) { surroundings_ = std::move(surroundings); }
    /// The chart answers here whether the person drags it; empty takes the chart away.
    void setInteractingProbe(std::function<bool()> probe) { interactingProbe_ = std::move(probe); }
    bool interacting() const { return interactingProbe_ && interactingProbe_(); }

    /// Tells that something of the chart or the timeframe is not what it was. Copies no list.
    void setChart(const Chart& chart);
    const Chart& chart() const { return chart_; }
    /// Tells that the paper account's lines are not what they were.
    void tellAccountChanged() { emit accountChanged(); }

    bool entered() const { return fields_.entered; }
    bool signingIn() const { return fields_.signingIn; }
    QString authError() const { return fields_.authError; }
    QString setupProblem() const { return fields_.setupProblem; }
    QString signInHint() const { return fields_.signInHint; }
    QString userEmail() const { return fields_.userEmail; }
    bool connected() const { return fields_.connected; }
    bool connLimited() const { return fields_.connLimited; }
    QString status() const { return fields_.status; }
    QString symbol() const { return fields_.symbol; }
    int timeframe() const { return fields_.timeframe; }
    QStringList futures() const { return fields_.futures; }
    QStringList stocks() const { return fields_.stocks; }
    QString notice() const { return fields_.notice; }
    QString noticeDetail() const { return fields_.noticeDetail; }
    bool empty() const { return !chart_.candles || chart_.candles->empty(); }

    Q_INVOKABLE void signIn(const QString& email, const QString& password, bool remember);
    Q_INVOKABLE void signOut();
    Q_INVOKABLE void switchSymbol(const QString& symbol);
    Q_INVOKABLE void setTimeframe(int minutes);

 signals:
    void changed();
    void enteredChanged();
    void emptyChanged();
    void chartChanged();
    void accountChanged();

 private:
    Fields fields_;
    Actions actions_;
    Surroundings surroundings_;
    std::function<bool()> interactingProbe_;
    Chart chart_;
    bool wasEmpty_ = true;
};

}  // namespace vmr
