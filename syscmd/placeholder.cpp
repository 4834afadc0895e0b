// stands in until the first unit
