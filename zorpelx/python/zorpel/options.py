# SPDX-License-Identifier: MIT
"""Options of partition(): the names, choices and presets of the program zorpelx."""

from __future__ import annotations

import math
import operator
import warnings
from typing import Any, Dict, Mapping, NamedTuple, Optional

from .errors import InputError

INT_MAX = 2**31 - 1
MATCHINGS = {"hfc": 1, "fc": 2, "gfc": 3, "hedge": 4, "edge": 5}
REFINEMENTS = {"fm": 1, "1wayfm": 2, "eefm": 3}
VCYCLES = {"no": 0, "end": 1, "formin": 2, "all": 3}
NO_YES = {"no": 0, "yes": 1}
PRESETS: Dict[str, Dict[str, Any]] = {
    "fast": {"runs": 3, "matching": "hfc", "refine": "1wayfm", "vcycle": "end", "starts": 1},
    "default": {"runs": 10, "matching": "hfc", "refine": "fm", "vcycle": "end", "starts": 1},
    "best": {"runs": 10, "matching": "hfc", "refine": "1wayfm", "vcycle": "all", "starts": 8},
}
OBJECTIVES = {"cut": 0, "km1": 1, "soed": 2}
SEARCH_PRESETS = {"fast": 0, "default": 1, "best": 2}
OLD_NAMES = {"fixed": "fix"}
REPLACED = {
    "imbalance": "epsilon bounds the parts, and ubfactor each bisection of the engine alone, as "
    "imbalance did",
    "keep": "epsilon takes the same percentage, and the search keeps it",
}
EPSILON = 3.0  #: percent, unless another is given


class Number(NamedTuple):
    """An option that is a number for the library."""

    field: str  # of zorpelx_options
    least: int
    most: int
    choices: Mapping[str, int] = {}


NUMBERS = {
    "nparts": Number("nparts", 2, INT_MAX),
    "ubfactor": Number("ubfactor", 1, 49),
    "runs": Number("nruns", 1, INT_MAX),
    "matching": Number("ctype", 1, 5, MATCHINGS),
    "refine": Number("rtype", 1, 3, REFINEMENTS),
    "vcycle": Number("vcycle", 0, 3, VCYCLES),
    "reconst": Number("reconst", 0, 1, NO_YES),
    "polish": Number("polish", 0, 1, NO_YES),
    "trace": Number("trace", 0, INT_MAX),
    "objective": Number("objective", 0, 2, OBJECTIVES),
    "keep_in_place": Number("keep_price", 0, INT_MAX),
    "seed": Number("seed", -1, INT_MAX),
    "starts": Number("starts", 1, INT_MAX),
    "jobs": Number("jobs", 0, INT_MAX),
    "threads": Number("threads", 0, INT_MAX),
    # 16 TiB: who counts in bytes, as no other place here does, is told so
    "memory": Number("memory", 0, 2**24),
}


def bad_option(sentence: str) -> InputError:
    """The fault of an argument."""
    return InputError(sentence, 2)


def check_int(name: str, value: Any, least: int = -(2**63), most: int = 2**63 - 1) -> int:
    """value as an integer from least to most."""
    try:
        number = operator.index(value)
    except (TypeError, OverflowError):
        raise bad_option(f"{name} is {value!r}; it should be an integer.") from None
    if number < least and most >= INT_MAX:
        raise bad_option(f"{name} is {number}; it should be at least {least}.")
    if not least <= number <= most:
        raise bad_option(f"{name} is {number}; it should be between {least} and {most}.")
    return number


def number(name: str, value: Any) -> int:
    """The number of an option, given by number or by the name of a choice."""
    option = NUMBERS[name]
    if isinstance(value, str) and option.choices:
        if value.lower() not in option.choices:
            raise bad_option(f"{name} is {value!r}; it should be one of {_names(option)}.")
        return option.choices[value.lower()]
    return check_int(name, value, option.least, option.most)


def _names(option: Number) -> str:
    return ", ".join(option.choices)


def check_seed(value: Optional[int]) -> int:
    """None and -1 draw one. 0 would give the numbers of 1."""
    seed = -1 if value is None else number("seed", value)
    if seed == 0:
        raise bad_option("seed is 0, which gives the same random numbers as 1; take that.")
    return seed


def check_memory(value: Optional[int]) -> int:
    """Bytes from mebibytes; None and 0 mean no cap."""
    return 0 if value is None else number("memory", value) << 20


def check_real(name: str, value: Any, unit: str) -> float:
    """value as a number of some unit, 0 or more."""
    try:
        real = math.nan if isinstance(value, (str, bytes)) else float(value)
    except (TypeError, ValueError, OverflowError):
        real = math.nan
    if not 0 <= real <= 1e9:
        raise bad_option(f"{name} is {value!r}; it should be a number of {unit}, 0 or more.")
    return real


def check_callable(name: str, value: Any) -> None:
    """value can be called, or is None."""
    if value is not None and not callable(value):
        raise bad_option(f"{name} is {value!r}; it should be a function.")


def of_preset(name: Any) -> Dict[str, Any]:
    """What a preset says."""
    if not isinstance(name, str) or name.lower() not in PRESETS:
        raise bad_option(f"preset is {name!r}; it should be one of {', '.join(PRESETS)}.")
    return PRESETS[name.lower()]


def check_apart(engine: Mapping[str, Any], search: Mapping[str, Any]) -> bool:
    """Whether options that are the engine's own were given. None stands for what was not; those of
    the search cannot come with them."""
    own = [name for name, value in engine.items() if value is not None]
    others = [name for name, value in search.items() if value is not None]
    if own and others:
        raise bad_option(
            f"{others[0]} is for the search, and {own[0]} for the engine alone: leave one of them "
            "out."
        )
    return bool(own)


def by_new_names(old: Mapping[str, Any], given: Dict[str, Any]) -> Dict[str, Any]:
    """given, with options that older programs call otherwise."""
    for name, value in old.items():
        if name in REPLACED:
            raise bad_option(f"{name} is gone: {REPLACED[name]}.")
        if name not in OLD_NAMES:
            raise TypeError(f"partition() got an unexpected keyword argument {name!r}")
        warnings.warn(f"{name} is now called {OLD_NAMES[name]}", DeprecationWarning, stacklevel=3)
        given[OLD_NAMES[name]] = value
    return given
