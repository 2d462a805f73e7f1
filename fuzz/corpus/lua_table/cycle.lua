T = { a = 1 } T.self = T T.list = { T, { T } } U = { [newproxy()] = 1, [print] = 2, f = print }
local d = {} Deep = d for i = 1, 300 do d.n = {} d = d.n end
