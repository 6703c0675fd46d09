# The serialized-form round trip of the three bench-data documents (read relative to this
# folder: ../shared beside the repository); registered only where the folder exists.
let j = JSON.FromString(readfile("../../../shared/bench-data/twitter.json"))
expect(JSON.Equals(deserialize(serialize(j)), j), true)
j = JSON.FromString(readfile("../../../shared/bench-data/citm_catalog.json"))
expect(JSON.Equals(deserialize(serialize(j)), j), true)
j = JSON.FromString(readfile("../../../shared/bench-data/canada.json"))
expect(JSON.Equals(deserialize(serialize(j)), j), true)
