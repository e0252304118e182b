"""Ruptures: the table of their elements, their size, and where they lie."""
