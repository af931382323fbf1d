// The derived fields of the options source: patches, the selected expiration, and what the chart shows of them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Json.h"
#include "base/Signal.h"
#include "base/Uuid.h"
#include "market/FieldView.h"
#include "market/Records.h"

namespace vmr {

/// What of it belongs to one chart.
struct OptionsOfChart {
    explicit OptionsOfChart(NoticeGate* gate = nullptr) : levels(gate), secStrikes(gate) {}

    DerivedFields derivedFields;                 ///< aggregate fields as patched by the feed
    DerivedFields secondaryGexFields;            ///< the same of the second source
    Observable<std::vector<PriceLevel>> levels;  ///< call and put wall
    Observable<std::vector<StrikeRow>> secStrikes;
    Json strikesSource;                                ///< the rows that `strikes` were made of
    std::shared_ptr<std::vector<StrikeRow>> readRows;  ///< the aggregate's long rows, read but not shown yet
};

/// What was made of the last fields stays over a change of chart until new ones come. Main thread.
class OptionsData : public OptionsOfChart {
 public:
    /// `ids` names the levels and must outlive it; `gate` may be null.
    explicit OptionsData(UuidSource& ids, NoticeGate* gate = nullptr);

    /// Begins another chart, without fields.
    void open() { OptionsOfChart::operator=(OptionsOfChart()); }

    Observable<std::vector<StrikeRow>> strikes;  ///< rows of the effective fields, ascending
    Observable<double> etfRatio;                 ///< factor from strike to chart price
    Observable<double> secEtfRatio;
    Observable<std::optional<double>> gammaFlipStrike;
    Observable<HudMetrics> hud;
    Observable<std::optional<std::string>> selectedExp;  ///< chosen expiration, yyyy-MM-dd
    Observable<std::vector<std::string>> futureExps;     ///< expirations on offer

    /// The aggregate overlaid with the selected expiration; valid until `derivedFields` changes.
    FieldView effectiveDerivedFields() const;

    /// A patch of the fields, at market time `now`. `rows` are its long rows, read beforehand; null when they were not.
    void takeDerived(const Json& payload, std::shared_ptr<std::vector<StrikeRow>> rows, double now);
    void takeSecondaryGex(const Json& payload);
    /// The user's pick of an expiration, which is kept while it is on offer; empty for all of them together, which is
    /// kept for good. Tells whether it is another one.
    bool setExpiration(const std::string& iso);

 private:
    void updateExpirations(double now);
    void reparse();

    UuidSource& ids_;
    bool userPickedExp_ = false, userPickedAll_ = false;
};

}  // namespace vmr
