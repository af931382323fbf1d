// A pane's 3D view of its surface, as Qt properties; the scene that shows them is a module of its own.
#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QQuaternion>
#include <QTimer>
#include <QUrl>
#include <QVariantList>
#include <QVariantMap>
#include <QVector3D>
#include <QWindow>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "model/Gex3DLabels.h"

namespace vmr {

class AppModel;
class Gex3DView;

/// Mirrors the pane's `Gex3DView` while it is open and hands gestures to it. Bars ease to their new heights. Places in
/// points from the scene's top left. Main thread.
class Gex3DViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(QUrl view READ view NOTIFY openChanged)
    Q_PROPERTY(bool open READ open NOTIFY openChanged)
    Q_PROPERTY(QString source READ source NOTIFY sceneChanged)
    Q_PROPERTY(bool loading READ loading NOTIFY sceneChanged)
    Q_PROPERTY(QVariantList labels READ labels NOTIFY sceneChanged)
    Q_PROPERTY(QVariantList labelsShown READ labelsShown NOTIFY labelsPlaced)
    Q_PROPERTY(qreal labelScale READ labelScale NOTIFY labelsPlaced)
    Q_PROPERTY(QVariantList expirations READ expirations NOTIFY sceneChanged)
    Q_PROPERTY(QVector3D markerPlace READ markerPlace NOTIFY sceneChanged)
    Q_PROPERTY(QVector3D cameraPosition READ cameraPosition NOTIFY cameraChanged)
    Q_PROPERTY(QQuaternion cameraRotation READ cameraRotation NOTIFY cameraChanged)
    Q_PROPERTY(qreal fieldOfView READ fieldOfView NOTIFY cameraChanged)
    Q_PROPERTY(qreal angle READ angle NOTIFY cameraChanged)
    Q_PROPERTY(QQuaternion labelRotation READ labelRotation NOTIFY cameraChanged)
    Q_PROPERTY(qreal labelSide READ labelSide NOTIFY cameraChanged)
    Q_PROPERTY(QString tooltip READ tooltip NOTIFY tooltipChanged)
    Q_PROPERTY(bool autoRotate READ autoRotate WRITE setAutoRotate NOTIFY autoRotateChanged)
    Q_PROPERTY(bool colorSafe READ colorSafe WRITE setColorSafe NOTIFY colorSafeChanged)
    Q_PROPERTY(bool manySamples READ manySamples CONSTANT)

 public:
    /// A bar as it stands now.
    struct Bar {
        QVector3D place, size;
        bool positive = false, lit = false;
    };

    explicit Gex3DViewModel(QObject* parent = nullptr);

    /// The pane, which outlives this or is replaced before it ends; null for none.
    void show(AppModel* pane);
    /// Takes over what has changed in it.
    void refresh();

    const std::vector<Bar>& bars() const { return bars_; }

    /// Where the view's QML is; empty while it is closed, and where it is not built in.
    QUrl view() const;
    bool open() const { return open_; }
    QString source() const { return source_; }
    bool loading() const;
    const QVariantList& labels() const { return labels_; }  ///< { text, place, white, outside }
    QVariantList labelsShown() const;                       ///< whether each has room
    qreal labelScale() const { return placed_.scale; }
    const QVariantList& expirations() const { return expirations_; }  ///< { date, label, hidden }
    QVector3D markerPlace() const;
    QVector3D cameraPosition() const;
    QQuaternion cameraRotation() const;
    qreal fieldOfView() const;  ///< degrees, upright
    qreal angle() const;        ///< degrees that the content is turned by
    /// Within the content, so that a label faces the camera.
    QQuaternion labelRotation() const;
    /// Which share of a label's width, from -1 to 1, points to larger x.
    qreal labelSide() const;
    QString tooltip() const { return tooltip_; }
    bool autoRotate() const;
    void setAutoRotate(bool on);
    /// Positive and negative bars differ in brightness, too. Remembered, and read again whenever the view opens.
    bool colorSafe() const { return colorSafe_; }
    void setColorSafe(bool on);
    /// Whether the window draws with more than one sample a pixel.
    bool manySamples() const { return manySamples_; }

    Q_INVOKABLE void close();
    Q_INVOKABLE void orbit(qreal dx, qreal dy);
    Q_INVOKABLE void pan(qreal dx, qreal dy);
    Q_INVOKABLE void dolly(qreal units);
    Q_INVOKABLE void home();
    Q_INVOKABLE void hover(qreal x, qreal y);
    /// The pointer has left, or drags.
    Q_INVOKABLE void leave();
    /// Marks the strike of the bar there on the chart; nothing beside the bars.
    Q_INVOKABLE void press(qreal x, qreal y);
    Q_INVOKABLE void setHidden(const QString& date, bool hidden);
    /// The window that shows it: while that is hidden or minimised nothing moves.
    Q_INVOKABLE void enterWindow(QWindow* window);
    /// Where the scene is in the pane, and the middles of the controls.
    Q_INVOKABLE void tellPlaces(const QRectF& area, const QVariantMap& controls);

 signals:
    void openChanged();
    void sceneChanged();
    void cameraChanged();
    void labelsPlaced();
    void barsChanged();
    void tooltipChanged();
    void autoRotateChanged();
    void colorSafeChanged();

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    Gex3DView* shown() const;
    void step();
    void readColorSafe();
    void makeLists();
    void makeBars(bool eased);
    void setHeights();
    void lookAgain();
    void looked();
    void runSteps();

    AppModel* pane_ = nullptr;
    QPointer<QWindow> window_;
    QString source_, tooltip_;
    QVariantList labels_, expirations_;
    bool open_ = false, colorSafe_ = false;
    const bool manySamples_, reduced_;
    std::vector<Bar> bars_;
    Gex3DLabels placed_;
    std::vector<std::pair<double, double>> heights_;                ///< from which to which each bar eases
    std::map<std::pair<std::string, double>, std::size_t> places_;  ///< of a bar by its row and strike
    double easedSince_ = -1;                                        ///< monotonic; below 0 while none eases
    double steppedAt_ = 0;
    std::uint64_t revision_ = 0;  ///< of the scene whose bars these are
    QTimer steps_;
};

}  // namespace vmr
