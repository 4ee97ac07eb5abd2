"""Keywords into the arguments of a command line. Which there are is told by the table that the program has, too."""

import os
from collections.abc import Iterable, Mapping

from . import _oxrrec
from ._errors import OptionError

# In a dict, what stands between a key and its value, and between the key and the keys of a dict in it.
_BETWEEN = {"when": (":", "="), "field": ("=", ":"), "nest": (":", "")}
_YES_NO = {True: "yes", False: "no"}


def arguments(function, given, own=(), options_of=None):
    """The arguments of a call. `given` has the keywords of the caller; `own` are those that it deals with itself.

    The options are those of the function, or of another one.
    """
    table = _oxrrec.options(options_of or function)
    for keyword in given:
        if keyword not in table:
            near = _oxrrec.nearest(keyword, [*table, *own])
            raise TypeError(f"{function}() has no option {keyword!r}" + (f"; is {near!r} meant?" if near else ""))
    result = []
    for keyword, (name, value, words, _help, is_required) in table.items():
        setting = given.get(keyword)
        if setting is None:
            if is_required:
                raise TypeError(f"{function}() needs the option {keyword!r}")
        elif not value:
            if not isinstance(setting, bool):
                raise TypeError(f"{keyword} is True or False, not {setting!r}")
            result += [name] if setting else []
        else:
            result += [os.fsencode(f"{name}={text}") for text in _filled(keyword, _texts(keyword, setting, value, words))]
    return result


def _filled(keyword, texts):
    """The texts, of which none is empty: a parser of command lines would take the next argument in its place."""
    for text in texts:
        if not text:
            raise OptionError(f"{keyword} is empty: None is its default")
        yield text


def _texts(keyword, setting, value, words):
    if value == "A-B" and isinstance(setting, tuple):
        yield "-".join(str(byte) for byte in setting)
    elif isinstance(setting, Mapping):
        yield from _pairs(keyword, setting)
    elif isinstance(setting, bool) and words:
        yield _YES_NO[setting]
    elif isinstance(setting, (bytes, bytearray)) and value == "HEX":
        yield setting.hex()
    elif isinstance(setting, Iterable) and not isinstance(setting, (str, bytes)):
        yield from (_text(item) for item in setting)
    else:
        yield _text(setting)


def _text(setting):
    return os.fsdecode(setting) if isinstance(setting, (bytes, os.PathLike)) else str(setting)


def _pairs(keyword, setting):
    if keyword not in _BETWEEN:
        raise TypeError(f"{keyword} takes no dict")
    outer, inner = _BETWEEN[keyword]
    for key, content in setting.items():
        if isinstance(content, Mapping):
            yield from (f"{key}{inner}{_key(name)}{outer}{_text(text)}" for name, text in content.items())
        else:
            yield f"{key}{outer}{_text(content)}"


def _key(key):
    return ",".join(str(part) for part in key) if isinstance(key, tuple) else str(key)


def describe(function="read"):
    """The options of read(), write() or layout(): a dict of keyword to help text.

    >>> print(oxrrec.options()["on_error"])
    null|skip|stop: at a field that cannot be read: stop, write null for it, or leave its record out [stop]
    """
    table = _oxrrec.options(function)
    return {keyword: f"{value}: {text}" if value else text for keyword, (_, value, _, text, _) in table.items()}
