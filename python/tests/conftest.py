import pytest

import tavo


@pytest.fixture
def output():
    """What the engine prints on its standard channel, piece by piece."""
    return []


@pytest.fixture
def engine(output):
    engine = tavo.Engine()
    engine.on_output = output.append
    return engine
