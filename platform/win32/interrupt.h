// A request to end the process while a capture or a save is under way.
#pragma once

namespace delvane {

// Asked by searches and file writers: throws CInterrupted once a CInterruptGuard has seen such a request.
void ThrowIfInterrupted();

}  // namespace delvane
