#pragma once
// Running out of memory ends a command with one line and a non-zero status, never an abort.
// Allocation failures throw std::bad_alloc, which each command lets reach main; a reserve of
// memory, given back at the first failure, leaves room for unwinding and the message.
namespace zorexp_cli {

// Sets aside the reserve and installs the handler that gives it back.
void InstallOutOfMemoryReserve();

}  // namespace zorexp_cli
