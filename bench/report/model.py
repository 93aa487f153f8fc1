"""What a page of the report is made of."""
from dataclasses import dataclass, field
from typing import List, Optional, Tuple

from .arithmetic import Spread


@dataclass
class Series:
    """One line or one colour of bars: (x, value) by growing x, or by category."""
    label: str
    points: List[Tuple[object, Spread]]


@dataclass
class Plot:
    """Lines over numbers, or bars over categories. `name` is unique within the report; units stand in the labels."""
    name: str
    title: str
    x_label: str
    y_label: str
    series: List[Series]
    bars: bool = False
    log_x: bool = False
    log_y: bool = False
    bends: List[Tuple[float, str]] = field(default_factory=list)  # where a line across marks a bend


@dataclass
class Table:
    title: str
    head: List[str]
    rows: List[List[str]]


@dataclass
class Ratio:
    """One of the figures that the summary consists of."""
    what: str
    value: Optional[Spread]
    unit: str = ""


@dataclass
class Section:
    """What one benchmark shows."""
    name: str
    title: str
    what: str
    ratios: List[Ratio] = field(default_factory=list)
    sentences: List[str] = field(default_factory=list)
    bends: List[str] = field(default_factory=list)  # sentences on where a cost bends
    plots: List[Plot] = field(default_factory=list)
    tables: List[Table] = field(default_factory=list)
