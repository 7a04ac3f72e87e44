// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Tarnvel.ManagedConfiguration 1.0

ApplicationWindow {
    id: window

    // What the service has refused to change, until the administrator changes something.
    property var locked: []
    readonly property bool isDark: managed.values.theme === "dark"

    // After a refusal, the control must show the value that still applies.
    function change(path, object, restore) {
        managed.change(object, error => {
            message.text = error.message;
            if (error.code)
                restore();
            if (error.name === "Forbidden")
                window.locked = window.locked.concat(path);
        });
    }

    title: qsTr("Viewer")
    visible: true
    width: 480
    height: 280
    palette.windowText: isDark ? "#fafafa" : "#202020"
    background: Rectangle { color: window.isDark ? "#202020" : "#fafafa" }

    ManagedConfiguration {
        id: managed

        // Of the schema.
        defaults: viewerDefaults
        onChanged: window.locked = []
        onErrorChanged: message.text = managed.error.message
    }

    GridLayout {
        anchors.fill: parent
        anchors.margins: 16
        columns: 2
        enabled: managed.status === ManagedConfiguration.Ready

        Label { text: qsTr("Theme") }
        Label { text: managed.values.theme }

        Label { text: qsTr("Zoom, %1 %").arg(managed.values.zoom) }
        Slider {
            objectName: "zoom"
            Layout.fillWidth: true
            enabled: window.locked.indexOf("zoom") < 0
            from: 25
            to: 400
            value: managed.values.zoom
            onMoved: window.change("zoom", { zoom: Math.round(value) },
                                   () => value = Qt.binding(() => managed.values.zoom))
        }

        Label { text: qsTr("Proxy") }
        TextField {
            objectName: "proxy"
            Layout.fillWidth: true
            enabled: window.locked.indexOf("network/proxy") < 0
            text: managed.values.network.proxy
            // It also finishes when it loses the focus.
            onEditingFinished: {
                if (text !== managed.values.network.proxy)
                    window.change("network/proxy", { network: { proxy: text } },
                                  () => text = Qt.binding(() => managed.values.network.proxy));
            }
        }

        Label {
            Layout.alignment: Qt.AlignTop
            text: qsTr("Recent files")
        }
        ListView {
            objectName: "recentFiles"
            Layout.fillWidth: true
            Layout.fillHeight: true
            model: managed.values.recentFiles
            delegate: Label {
                required property string modelData
                text: modelData
            }
        }
    }

    footer: Label {
        id: message
        objectName: "message"
        padding: 16
        wrapMode: Text.Wrap
    }
}
