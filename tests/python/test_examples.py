"""The examples of docstrings and of the page, in the folder of the samples."""

import doctest
import importlib
import os
import pkgutil

import pytest

import oxrrec
from conftest import PAGE, README, SAMPLES

MODULES = ["oxrrec"] + ["oxrrec." + module.name for module in pkgutil.iter_modules(oxrrec.__path__)]


@pytest.mark.parametrize("name", MODULES)
def test_docstrings(name, monkeypatch):
    monkeypatch.chdir(SAMPLES)
    assert doctest.testmod(importlib.import_module(name), extraglobs={"oxrrec": oxrrec}).failed == 0


@pytest.mark.parametrize("page, examples", [(PAGE, 6), (README, 2)])
def test_page(page, examples, monkeypatch):
    monkeypatch.chdir(SAMPLES)
    result = doctest.testfile(page, module_relative=False, encoding="utf-8", optionflags=doctest.ELLIPSIS)
    assert result.failed == 0 and result.attempted >= examples


def test_public_names_are_told():
    with open(PAGE, encoding="utf-8") as file:
        page = file.read()
    assert [name for name in oxrrec.__all__ if name not in page] == []
    assert os.path.isfile(os.path.join(os.path.dirname(oxrrec.__file__), "py.typed"))
