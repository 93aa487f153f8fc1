#pragma once

namespace NS_CORBA {

/// Blocks all signals in the calling thread; a failure is left in errno. Any thread may call it.
void BlockAllSignals();

}  // namespace NS_CORBA
