import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Norvella.Resources

// Right answers per tense by week: one line per tense, 0-100 %, the current
// week at the right; a week without answers leaves a gap.
ColumnLayout {
    id: chart

    // [{title, values}]
    property var series: []
    readonly property var colours: [Theme.primary, Theme.secondary, Theme.segmentTint, Theme.secondaryText]
    spacing: 6

    onSeriesChanged: canvas.requestPaint()

    Canvas {
        id: canvas
        Layout.fillWidth: true
        Layout.preferredHeight: 140
        Accessible.role: Accessible.Chart
        Accessible.name: chart.series.map(s => s.title + ": " + s.values.filter(v => v >= 0)
                                          .map(v => Math.round(v * 100) + " %").join(", ")).join("; ")

        onWidthChanged: requestPaint()
        onPaint: {
            const ctx = getContext("2d")
            ctx.reset()
            const left = 28, top = 6, w = width - left - 6, h = height - top - 14
            ctx.strokeStyle = Theme.separator
            ctx.fillStyle = Theme.secondaryText
            ctx.lineWidth = 1
            ctx.font = "10px sans-serif"
            for (const share of [0, 0.5, 1]) {
                const y = top + h * (1 - share)
                ctx.beginPath()
                ctx.moveTo(left, y)
                ctx.lineTo(left + w, y)
                ctx.stroke()
                ctx.fillText(Math.round(share * 100) + "%", 0, y + 3)
            }
            chart.series.forEach((line, index) => {
                const values = line.values
                const step = values.length > 1 ? w / (values.length - 1) : 0
                ctx.strokeStyle = chart.colours[index % chart.colours.length]
                ctx.fillStyle = ctx.strokeStyle
                ctx.lineWidth = 2
                ctx.beginPath()
                let drawing = false
                values.forEach((value, week) => {
                    if (value < 0) {
                        drawing = false
                        return
                    }
                    const x = left + step * week, y = top + h * (1 - value)
                    if (drawing)
                        ctx.lineTo(x, y)
                    else
                        ctx.moveTo(x, y)
                    drawing = true
                })
                ctx.stroke()
                values.forEach((value, week) => {
                    if (value >= 0)
                        ctx.fillRect(left + step * week - 2.5, top + h * (1 - value) - 2.5, 5, 5)
                })
            })
        }
    }

    Flow {
        Layout.fillWidth: true
        spacing: 12

        Repeater {
            model: chart.series.map((line, index) => ({title: line.title,
                                                      colour: chart.colours[index % chart.colours.length]}))

            Row {
                id: entry
                required property var modelData
                spacing: 4

                Rectangle {
                    width: 12
                    height: 12
                    anchors.verticalCenter: parent.verticalCenter
                    color: entry.modelData.colour
                }

                Label {
                    text: entry.modelData.title
                    color: Theme.text
                }
            }
        }
    }
}
