"""All mutants of a source."""

# Each import adds operators, in this order.
import ownership  # noqa: F401
import conditions  # noqa: F401
import statements  # noqa: F401
import texts  # noqa: F401
import values  # noqa: F401
from mutant import OPERATORS, Mutant


def mutants_of(source):
    """Returns all mutants of a source in the order of its lines, without duplicates."""
    seen = {source.text}
    found = []
    for name, changes in OPERATORS.items():
        for start, end, replacement in changes(source):
            mutant = Mutant(source, name, start, end, replacement)
            if mutant.text not in seen:
                seen.add(mutant.text)
                found.append(mutant)
    ordinals = {}
    numbered = []
    for mutant in found:
        ordinal = ordinals[mutant.id] = ordinals.get(mutant.id, 0) + 1
        numbered.append(Mutant(mutant.source, mutant.operator, mutant.start, mutant.end,
                               mutant.replacement, ordinal))
    return sorted(numbered, key=lambda mutant: mutant.line)
