"""A few thousand calls with arguments from anywhere; fuzz_arguments.py makes more of them."""

import warnings

import fuzz_arguments
import kro


def test_arguments_from_anywhere():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", kro.CopyWarning)
        went_well = sum(fuzz_arguments.run(number) for number in range(4000))
    # Both happen often.
    assert 1000 < went_well < 3000
