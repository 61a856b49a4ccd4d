from hypothesis import settings

# The same examples in every run; a machine may be slow.
settings.register_profile("tarvo", max_examples=40, deadline=None, database=None, derandomize=True)
settings.load_profile("tarvo")
