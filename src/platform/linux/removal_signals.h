#pragma once

namespace ORBO {

// From now on `remove` is called, and the earlier disposition restored and followed,
// when a signal comes that would end the process.  Signals that are ignored stay so, and
// those that a handler was set for, but for faults.
// `remove` may make system calls only.
void TakeSignals(void (*remove)());

// Restores the dispositions that TakeSignals changed and nobody since.
void GiveSignalsBack();

}  // namespace ORBO
