#pragma once

/// From now on this process can start no other one, as on a host that is out of memory. Starting
/// one takes tens of milliseconds in a process as large as a fuzz target's. The program that has
/// the names for the sanitizers' reports is started before.
void startNoPrograms();
