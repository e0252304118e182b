"""The formats of files: a module for each, and the registry that knows them all.

A module of a field has, as far as its format is read or written,

``open(path, coord=None, variable=None)``
    The field of a file, read when it is used.
``write(field, path, options=Writing(), progress=no_progress)``
    Writes a field; the file appears when it is complete. Returns the `GridShape` that the file says.
``steps(field, options)``
    How often `write` tells its progress.
``is_first_line(line)``
    For texts that are told by their first line which is no comment: whether it is one of this format.

A new format is such a module and a line in ``registry.FORMATS``.
"""
