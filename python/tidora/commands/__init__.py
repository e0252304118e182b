"""The command ``tdr``: a module for each sub-command, with its options and what it prints.

Nothing else in the package names an option or prints.
"""
