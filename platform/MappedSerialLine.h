#pragma once

#include "platform/DeviceMap.h"
#include "platform/SerialLine.h"

#include <memory>

namespace kestrova {

// The serial line of the program: port n is whatever the device map makes COMn, a host device
// (QtSerialLine) or a device server on the network (NetSerialLine). The line of the port's kind
// is made when the port opens or is watched for, and takes this line's set-up; everything else
// is handed to it, and its events come from this line. The CD and CTS time-outs are counted here.
class MappedSerialLine final : public SerialLine {
    Q_OBJECT
public:
    explicit MappedSerialLine(DeviceMap devices, QObject* parent = nullptr);
    ~MappedSerialLine() override;

    void SetPortOpen(bool open) override;
    [[nodiscard]] bool PortOpen() const override { return m_line && m_line->PortOpen(); }
    [[nodiscard]] int InBufferCount() const override { return m_line ? m_line->InBufferCount() : 0; }
    void SetInBufferCount(int count) override;
    [[nodiscard]] int OutBufferCount() const override { return m_line ? m_line->OutBufferCount() : 0; }
    void SetOutBufferCount(int count) override;
    [[nodiscard]] QString Input() override;
    void Output(const QString& text) override;
    [[nodiscard]] bool CTSHolding() const override { return m_line && m_line->CTSHolding(); }
    [[nodiscard]] bool DSRHolding() const override { return m_line && m_line->DSRHolding(); }
    [[nodiscard]] bool CDHolding() const override { return m_line && m_line->CDHolding(); }
    [[nodiscard]] bool ModemLinesReported() const override { return m_line && m_line->ModemLinesReported(); }
    [[nodiscard]] bool OnDeviceServer() const override { return m_line && m_line->OnDeviceServer(); }
    [[nodiscard]] bool OutputHeld() const override { return m_line && m_line->OutputHeld(); }
    void WatchDevice(bool on) override;

    // The line now serving the port; null before the port first opened or was watched for.
    [[nodiscard]] SerialLine* Serving() const { return m_line.get(); }

protected:
    void PropertyChanged(const char* name) override;

private:
    // Makes the line for the current port's kind unless the one there serves it already.
    SerialLine& LineForPort();
    void Hand(SerialLine& to, const QByteArray& property);

    DeviceMap m_devices;
    std::unique_ptr<SerialLine> m_line;
    PortMapping m_serving; // what m_line was made for
};

} // namespace kestrova
