// Filled by its subsystem.
