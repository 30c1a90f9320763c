"""The one kind of failure the generator reports: a problem in a description, with its place."""


class DescriptionError(Exception):
    def __init__(self, path, line, col, message):
        super().__init__(f"{path}:{line}:{col}: error: {message}")
        self.path = path
        self.line = line
        self.col = col
        self.message = message
