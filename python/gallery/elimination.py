# %% [markdown]
# # A sparse matrix ordered for elimination
#
# The equations of a grid, solved by LU factorisation. A partition with rows as nets orders the matrix to a block for
# each part and a border; blocks are eliminated independently of each other. Ordering by such blocks, and the cells of
# cut nets last, keeps the factors sparse.

# %%
import numpy
import scipy.sparse
import scipy.sparse.linalg
from matplotlib import pyplot

import kapris

n = 30
line = scipy.sparse.diags([-1, 4.0, -1], [-1, 0, 1], shape=(n, n))
matrix = (scipy.sparse.kron(scipy.sparse.identity(n), line) + scipy.sparse.kron(
    scipy.sparse.diags([-1, -1], [-1, 1], shape=(n, n)), scipy.sparse.identity(n))).tocsr()
rng = numpy.random.default_rng(1)
shuffle = rng.permutation(n * n)
matrix = matrix[shuffle][:, shuffle]

# %% [markdown]
# The cells in nets of more than one part, on one side of the cut, separate the parts: they go last.

# %%
parts = 8
h = kapris.Hypergraph.from_scipy(matrix)
result = kapris.partition(h, parts, epsilon=0.05, seed=1)
border = set()
for j in range(h.nnets):
    cells = h.net(j)
    if len({int(result.part[c]) for c in cells}) > 1:
        border.update(c for c in cells if result.part[c] == min(result.part[cells]))
key = [(parts if c in border else int(result.part[c]), c) for c in range(h.ncells)]
order = numpy.array([c for _, c in sorted(key)])
ordered = matrix[order][:, order]


def fill(a):
    """Entries of the factors, without pivoting and reordering."""
    lu = scipy.sparse.linalg.splu(a.tocsc(), permc_spec="NATURAL", diag_pivot_thresh=0, options={"SymmetricMode": True})
    return lu.L.nnz + lu.U.nnz


before, after = fill(matrix), fill(ordered)
print(f"entries of the factors: {before} as given, {after} ordered")
assert after < before

# %%
figure, axes = pyplot.subplots(1, 3, figsize=(12, 4))
kapris.spy(matrix, ax=axes[0])
axes[0].set_title("as given")
kapris.spy(matrix, result, ax=axes[1])
axes[1].set_title("bordered blocks")
kapris.spy(ordered, ax=axes[2])
axes[2].set_title("for elimination")
figure.savefig("elimination.png", dpi=80)
