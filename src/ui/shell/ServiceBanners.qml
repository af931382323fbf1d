// What the service has to say, one banner under the other.
import QtQuick
import Velmora

Column {
    id: banners

    required property ServiceViewModel service

    spacing: 8

    Banner {
        objectName: "maintenanceBanner"
        width: parent.width
        visible: text !== ""
        icon: "wrench"
        text: banners.service.maintenance
        onDismissed: banners.service.dismissMaintenance()
    }
    Banner {
        objectName: "alertBanner"
        width: parent.width
        visible: title !== ""
        icon: "bell"
        title: banners.service.alertTitle
        text: banners.service.alertMessage
        onDismissed: banners.service.dismissAlert()
    }
    Banner {
        objectName: "updateBanner"
        width: parent.width
        visible: text !== ""
        icon: "download"
        text: banners.service.update
        action: banners.service.updateOpens ? qsTr("Download") : ""
        onActed: banners.service.openUpdate()
        onDismissed: banners.service.dismissUpdate()
    }
}
