"""Pictures: maps, frames and sections."""
