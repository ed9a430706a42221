"""A host's state in one file: written, read, compared, anonymized."""
