// What an expanded row shows: finished patch runs, then deferral events.
import QtQuick
import QtQuick.Layouts

ColumnLayout {
    id: root

    required property string receiptsTitle
    required property string receiptsEmptyText
    required property var receipts
    required property string eventsTitle
    required property var events

    spacing: 6

    component Heading: Text {
        color: Theme.secondary
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
    }

    component Line: RowLayout {
        id: line

        property string symbol
        property string role: "secondary"
        property string time
        property string text
        property string detail

        spacing: Theme.grid
        Symbol {
            Layout.alignment: Qt.AlignTop
            name: line.symbol
            role: line.role
            size: 14
        }
        Text {
            Layout.alignment: Qt.AlignTop
            Layout.preferredWidth: 210
            text: line.time
            color: Theme.secondary
            font.pixelSize: Theme.captionSize
        }
        ColumnLayout {
            spacing: 2
            Text {
                visible: line.text !== ""
                text: line.text
                color: Theme.primary
                font.pixelSize: Theme.captionSize
            }
            Text {
                Layout.fillWidth: true
                visible: line.detail !== ""
                text: line.detail
                color: Theme.red
                font.pixelSize: Theme.captionSize
                wrapMode: Text.Wrap
            }
        }
    }

    Heading { text: root.receiptsTitle }
    Text {
        visible: root.receipts.length === 0
        text: root.receiptsEmptyText
        color: Theme.secondary
        font.pixelSize: Theme.captionSize
    }
    Repeater {
        model: root.receipts
        Line {
            required property var modelData
            Layout.fillWidth: true
            symbol: modelData.symbol
            role: modelData.color
            time: modelData.time
            text: modelData.version
            detail: modelData.detail
        }
    }
    Heading {
        Layout.topMargin: Theme.inset
        visible: root.events.length > 0
        text: root.eventsTitle
    }
    Repeater {
        model: root.events
        Line {
            required property var modelData
            Layout.fillWidth: true
            symbol: modelData.symbol
            time: modelData.time
            text: modelData.text
        }
    }
}
