// Filled with its subsystem.
