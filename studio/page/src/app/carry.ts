// Photos that go along to the next template: "another video with the same photos".
let carried: string[] = [];

export function carryItems(items: string[]) {
  carried = items;
}

/** Once: the template that is opened next takes them. */
export function takeCarried(): string[] {
  const items = carried;
  carried = [];
  return items;
}
