// The simulator's panel of one pane, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <array>
#include <functional>
#include <optional>

#include "base/MarketTimer.h"
#include "base/WeakTask.h"
#include "model/SimDesk.h"
#include "model/SimPanelFacts.h"
#include "ui/widgets/RowsModel.h"

namespace vmr {

/// Mirrors a `SimDesk` for QML and passes gestures on; decides nothing about trading. While the panel does not show, it
/// does nothing. Once a second of market time while it does, it reads what prices and the clock alone change; of the
/// cards it makes anew those whose revision has moved on, and tells of the rows that differ. Main thread.
class SimViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool shown READ shown WRITE setShown NOTIFY shownChanged)
    Q_PROPERTY(QString title READ title NOTIFY ticketChanged)
    Q_PROPERTY(QString empty READ empty NOTIFY ticketChanged)
    Q_PROPERTY(bool marketClosed READ marketClosed NOTIFY ticketChanged)
    Q_PROPERTY(QString warning READ warning NOTIFY ticketChanged)
    Q_PROPERTY(QString barred READ barred NOTIFY ticketChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY ticketChanged)

    Q_PROPERTY(int qty READ qty WRITE setQty NOTIFY ticketChanged)
    Q_PROPERTY(bool bracketOn READ bracketOn WRITE setBracketOn NOTIFY ticketChanged)
    Q_PROPERTY(int slTicks READ slTicks WRITE setSlTicks NOTIFY ticketChanged)
    Q_PROPERTY(int tpTicks READ tpTicks WRITE setTpTicks NOTIFY ticketChanged)
    Q_PROPERTY(bool useTicks READ useTicks WRITE setUseTicks NOTIFY ticketChanged)
    Q_PROPERTY(QString limitText READ limitText WRITE setLimitText NOTIFY ticketChanged)
    Q_PROPERTY(QString stopText READ stopText WRITE setStopText NOTIFY ticketChanged)
    Q_PROPERTY(QString limitRead READ limitRead NOTIFY ticketChanged)
    Q_PROPERTY(QString stopRead READ stopRead NOTIFY ticketChanged)
    Q_PROPERTY(bool limitWrong READ limitWrong NOTIFY ticketChanged)
    Q_PROPERTY(bool stopWrong READ stopWrong NOTIFY ticketChanged)
    Q_PROPERTY(int mostQty READ mostQty CONSTANT)
    Q_PROPERTY(int mostDistance READ mostDistance CONSTANT)
    /// What a second press would do; of which type's row, -1 for none, and on which side.
    Q_PROPERTY(QString question READ question NOTIFY ticketChanged)
    Q_PROPERTY(int questionRow READ questionRow NOTIFY ticketChanged)
    Q_PROPERTY(bool questionBuys READ questionBuys NOTIFY ticketChanged)

    Q_PROPERTY(double balance READ balance NOTIFY accountChanged)
    Q_PROPERTY(double equity READ equity NOTIFY accountChanged)
    Q_PROPERTY(double dayPnL READ dayPnL NOTIFY accountChanged)

    Q_PROPERTY(QString positionsHeading READ positionsHeading NOTIFY cardsChanged)
    Q_PROPERTY(QString ordersHeading READ ordersHeading NOTIFY cardsChanged)
    Q_PROPERTY(QString historyHeading READ historyHeading NOTIFY cardsChanged)
    Q_PROPERTY(vmr::RowsModel* positions READ positionsOf CONSTANT)
    Q_PROPERTY(vmr::RowsModel* orders READ ordersOf CONSTANT)
    Q_PROPERTY(vmr::RowsModel* metrics READ metricsOf CONSTANT)
    Q_PROPERTY(vmr::RowsModel* days READ daysOf CONSTANT)
    Q_PROPERTY(vmr::RowsModel* history READ historyOf CONSTANT)
    Q_PROPERTY(vmr::RowsModel* fills READ fillsOf CONSTANT)
    Q_PROPERTY(bool perfToday READ perfToday WRITE setPerfToday NOTIFY performanceChanged)
    Q_PROPERTY(QString exits READ exits NOTIFY performanceChanged)
    Q_PROPERTY(bool hasCurve READ hasCurve NOTIFY performanceChanged)

 public:
    /// What starting anew is about.
    struct Reset {
        std::function<double()> balance;  ///< that the account would have
        std::function<void()> run;
    };

    using QObject::QObject;

    /// Whose panel this is; both must outlive their being set here. Null for nobody's.
    void bind(SimDesk* desk, const Clock* clock = nullptr, MainLoop* main = nullptr);
    void setReset(Reset reset) { reset_ = std::move(reset); }

    bool shown() const { return shown_; }
    void setShown(bool shown);

    QString title() const;
    QString empty() const;
    bool marketClosed() const { return desk_ && desk_->marketClosed(); }
    QString warning() const;
    QString barred() const;
    QString notice() const;

    int qty() const { return static_cast<int>(ticket().qty); }
    void setQty(int qty);
    bool bracketOn() const { return ticket().bracketOn; }
    void setBracketOn(bool on);
    int slTicks() const { return static_cast<int>(ticket().slTicks); }
    void setSlTicks(int distance);
    int tpTicks() const { return static_cast<int>(ticket().tpTicks); }
    void setTpTicks(int distance);
    bool useTicks() const { return ticket().useTicks; }
    void setUseTicks(bool use);
    QString limitText() const { return QString::fromStdString(ticket().limitText); }
    void setLimitText(const QString& text);
    QString stopText() const { return QString::fromStdString(ticket().stopText); }
    void setStopText(const QString& text);
    QString limitRead() const { return read(sim::OrderType::limit); }
    QString stopRead() const { return read(sim::OrderType::stop); }
    bool limitWrong() const { return wrong(sim::OrderType::limit); }
    bool stopWrong() const { return wrong(sim::OrderType::stop); }
    int mostQty() const { return static_cast<int>(sim::SimTicket::mostQty); }
    int mostDistance() const { return static_cast<int>(sim::SimTicket::mostDistance); }
    QString question() const;
    int questionRow() const;
    bool questionBuys() const;

    double balance() const { return account_.balance; }
    double equity() const { return account_.equity; }
    double dayPnL() const { return account_.dayPnL; }

    QString positionsHeading() const;
    QString ordersHeading() const;
    QString historyHeading() const;
    bool perfToday() const { return desk_ && desk_->perfToday(); }
    void setPerfToday(bool today);
    QString exits() const { return QString::fromStdString(performance_.exits); }
    bool hasCurve() const { return performance_.curve.size() > 1; }
    const SimPerformance& performance() const { return performance_; }

    RowsModel positions, orders, metrics, days, history, fills;

    /// A button of the ticket; rows are market, limit and stop.
    Q_INVOKABLE void press(bool buys, int row);
    Q_INVOKABLE void stepPrice(int row, int ticks);
    Q_INVOKABLE void flatten(const QString& root);
    Q_INVOKABLE void protect(const QString& root, const QString& kind);
    Q_INVOKABLE void cancel(const QString& id);
    Q_INVOKABLE void cancelAll();
    /// What is asked before `reset`.
    Q_INVOKABLE QString resetQuestion() const;
    Q_INVOKABLE void reset();
    /// As the account bar writes it.
    Q_INVOKABLE static QString num(double value);

 signals:
    void shownChanged();
    void ticketChanged();
    void accountChanged();
    void cardsChanged();
    void performanceChanged();
    void startedOver();  ///< what is shown does not follow from what was shown before

 private:
    static constexpr std::size_t parts = 7;
    RowsModel* positionsOf() { return &positions; }
    RowsModel* ordersOf() { return &orders; }
    RowsModel* metricsOf() { return &metrics; }
    RowsModel* daysOf() { return &days; }
    RowsModel* historyOf() { return &history; }
    RowsModel* fillsOf() { return &fills; }

    const sim::SimTicket& ticket() const;
    template <class Change>
    void change(Change change);
    QString read(sim::OrderType type) const;
    bool wrong(sim::OrderType type) const;
    bool moved(SimDesk::Part part);
    void mark();
    void look();
    void refresh();
    void refreshAccount();
    void showPositions();
    void showPerformance();

    SimDesk* desk_ = nullptr;
    MainLoop* main_ = nullptr;
    Reset reset_;
    bool shown_ = false, marked_ = false;
    std::array<std::optional<std::uint64_t>, parts> seen_;  ///< revisions that the views show
    SimAccountFacts account_;
    SimPerformance performance_;
    std::uint64_t replacements_ = 0;  ///< of the account that is shown
    std::optional<MarketTimer> second_;
    Connection changed_;
    WeakTask whileThere_;
};

}  // namespace vmr
